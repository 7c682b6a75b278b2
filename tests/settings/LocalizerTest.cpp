#include "app/settings/Localizer.h"
#include "app/settings/Region.h"
#include "app/settings/StringTable.h"
#include "app/settings/ToolkitTexts.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// A bundle that is written for the test.
struct Bundle
{
    explicit Bundle(const QStringList &codes)
    {
        for (const QString &code : codes)
            write(code, R"("language" = ")" + code.toUtf8() + "\";");
    }

    QString path() const { return place.path() + QStringLiteral("/Vantle_Vantle.bundle"); }

    void write(const QString &code, const QByteArray &table) const
    {
        const QString folder = path() + QLatin1Char('/') + code + QStringLiteral(".lproj");
        QDir().mkpath(folder);
        QFile file(folder + QStringLiteral("/Localizable.strings"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(table);
    }

    QTemporaryDir place;
};

QString q(const char *text)
{
    return QString::fromUtf8(text);
}

QString chosen(const Localizer &texts)
{
    return texts.text(q("language"));
}

}

TEST(LocalizerTest, TheDesktopsLanguagesFindTheirClosestTable)
{
    const Bundle bundle({ q("de"), q("en"), q("fr"), q("zh-Hans"), q("zh-Hant") });
    const struct
    {
        QStringList languages;
        const char *code;
    } cases[] = {
        { { q("DE-at") }, "de" },           { { q("de-Latn-AT-1996") }, "de" },
        { { q("zh-TW") }, "zh-Hant" },      { { q("zh-MO") }, "zh-Hant" },
        { { q("zh-Hant-CN") }, "zh-Hant" }, { { q("zh-Hans-TW") }, "zh-Hans" },
        { { q("zh") }, "zh-Hans" },         { { q("nl-NL"), q("fr-CA"), q("de") }, "fr" },
        { { q("zh-HK") }, "zh-Hant" },      { { q("zh-SG") }, "zh-Hans" },
        { { q("pt-BR"), q("pt") }, "en" },  { { q("pt-BR"), q("zh-CN"), q("en") }, "zh-Hans" },
        { { q("C"), q("") }, "en" },        { {}, "en" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(qPrintable(c.languages.join(QLatin1Char(','))));
        const Localizer texts(bundle.path(), c.languages);
        EXPECT_EQ(texts.currentCode(), q(c.code));
        EXPECT_EQ(chosen(texts), q(c.code));
    }
}

TEST(LocalizerTest, AChosenLanguageHoldsAtOnceAndAnUnknownOneIsTheSystems)
{
    const Bundle bundle({ q("de"), q("en"), q("it") });
    Localizer texts(bundle.path(), { q("de") });
    texts.setOverride(q("it"));
    EXPECT_EQ(chosen(texts), q("it"));
    EXPECT_EQ(texts.currentCode(), q("it"));
    for (const char *unknown : { "fr", "../it", "", "system" }) {
        texts.setOverride(q(unknown));
        EXPECT_EQ(chosen(texts), q("de")) << unknown;
    }
}

TEST(LocalizerTest, AMissingTextShowsAsItsKey)
{
    const Bundle bundle({ q("en"), q("fr") });
    bundle.write(q("en"), R"("only_english" = "x";)");
    bundle.write(q("fr"), R"("k" = "100%% de %lld";)");
    Localizer texts(bundle.path(), { q("fr") });
    EXPECT_EQ(texts.text(q("only_english")), q("only_english"));
    EXPECT_EQ(texts.text(q("n_%lld"), { 3 }), q("n_3"));
    // Only a text with arguments is a format.
    EXPECT_EQ(texts.text(q("k")), q("100%% de %lld"));
    EXPECT_EQ(texts.text(q("k"), { 5 }), q("100% de 5"));
    const Localizer nowhere(q("/nowhere"), {});
    EXPECT_EQ(nowhere.text(q("key")), q("key"));
    EXPECT_EQ(nowhere.currentCode(), q("en"));
}

TEST(StringTableTest, ReadsTheFormatOfTheTables)
{
    const auto table = StringTable::parse(q(R"(
/* A comment; "no" = "entry"; */
"plain" = "Text"; // "no" = "entry";
"quotes"="She said \"a\\b\"";"lines" = "one\ntwo\tthree";
"unicode" = "\U00e9\u20AC \U1";
"direct" = "é€😀";
"// key" = "/* value */";
"empty" = "";
"twice" = "1"; "twice" = "2";
)"));
    const QHash<QString, QString> expected { { q("plain"), q("Text") },
                                             { q("quotes"), q(R"(She said "a\b")") },
                                             { q("lines"), q("one\ntwo\tthree") },
                                             { q("unicode"), q("é€ U1") },
                                             { q("direct"), q("é€😀") },
                                             { q("// key"), q("/* value */") },
                                             { q("empty"), QString() },
                                             { q("twice"), q("2") } };
    EXPECT_EQ(table, expected);
}

TEST(StringTableTest, AFaultEndsTheTableAndNothingElse)
{
    for (const char *rest : { "", "\"b\"", "\"b\" = ", R"("b" = "x)", R"("b" = "x")", R"("b" "x";)",
                              "b = x;", "/*", "//", "\"b\\", R"("b" = "\U12)" }) {
        SCOPED_TRACE(rest);
        const auto table = StringTable::parse(q(R"("a" = "1";)") + q(rest));
        EXPECT_EQ(table, (QHash<QString, QString> { { q("a"), q("1") } }));
    }
}

TEST(StringTableTest, ArgumentsGoWhereTheFormatSaysAndWhatHasNoneStays)
{
    const QVariantList both { q("file"), qint64(1234567890123) };
    const struct
    {
        const char *format;
        QVariantList arguments;
        const char *result;
    } cases[] = {
        { "%@: %lld", both, "file: 1234567890123" },
        { "%2$lld in %1$@", both, "1234567890123 in file" },
        { "%d%%", { 50 }, "50%" },
        { "%@", { q("%@ %lld %n") }, "%@ %lld %n" },
        { "%@", { 7 }, "7" },
        { "%lld items", { q("many") }, "%lld items" },
        { "%@ %@", { q("one") }, "one %@" },
        { "%3$@ %0$@ %99999999999999999999$@", { q("one") }, "%3$@ %0$@ %99999999999999999999$@" },
        { "%s %n %5d %", { q("one") }, "%s %n %5d %" },
        { "%", { 1 }, "%" },
        { "%1$", { 1 }, "%1$" }
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.format);
        EXPECT_EQ(StringTable::format(q(c.format), c.arguments), q(c.result));
    }
}

TEST(RegionTest, TheRegionOrdersTimesAndTheLanguageNamesThem)
{
    const QDateTime time(QDate(2026, 3, 5), QTime(14, 30));
    const struct
    {
        const char *region;
        const char *language;
        const char *time;
        const char *size;
    } cases[] = {
        { "en_US.UTF-8", "de", "3/5/26 2:30", "1.5 kB" },
        { "de_DE.UTF-8", "en", "05.03.26 14:30", "1,5 kB" },
        { "de_AT@euro", "fr", "05.03.26 14:30", "1,5 ko" },
        { "C.UTF-8", "fr", "05/03/2026 14:30", "1,5 ko" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.region);
        qputenv("LC_ALL", c.region);
        const QLocale language(q(c.language));
        EXPECT_TRUE(Region::dateTime(time, q(c.language)).startsWith(q(c.time)))
            << qPrintable(Region::dateTime(time, q(c.language)));
        EXPECT_EQ(Region::withRegionsPoint(
                      language.formattedDataSize(1500, 1, QLocale::DataSizeSIFormat), language)
                      .replace(QChar(0xa0), u' ')
                      .replace(QChar(0x202f), u' '),
                  q(c.size));
    }
    qunsetenv("LC_ALL");
}

TEST(ToolkitTextsTest, ButtonsAndMenusOfTheToolkitSpeakEachLanguage)
{
    ToolkitTexts texts;
    const auto word = [] { return QCoreApplication::translate("QLineEdit", "Select All"); };
    QSet<QString> seen;
    for (const char *code : { "en", "zh-Hans", "zh-Hant", "fr", "es", "de", "it", "ja", "ko" }) {
        texts.setLanguage(q(code));
        seen.insert(word());
    }
    EXPECT_EQ(seen.size(), 9);
    texts.setLanguage(q("en"));
    EXPECT_EQ(word(), q("Select All"));
}
