#include "platform/linux/transfer/DropFormats.h"
#include "platform/linux/transfer/DragFormats.h"

#include "base/FilePath.h"

#include <QFile>
#include <QHash>
#include <QSysInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using namespace Qt::StringLiterals;

QByteArrayList spelled(const QByteArray &uriList)
{
    QByteArrayList list;
    for (const Address &url : DropFormats::urls(uriList))
        list.append(url.text);
    return list;
}

QByteArray utf16(const QString &text)
{
    return { reinterpret_cast<const char *>(text.utf16()), text.size() * 2 };
}

}

TEST(DropFormatsTest, AListOfAddressesKeepsEveryByteOfItsFiles)
{
    const QByteArray own = QSysInfo::machineHostName().toUtf8();
    const std::pair<QByteArray, QByteArrayList> cases[] = {
        // Order, comments, blank lines, every line ending.
        { "# c\r\nfile:///b\r\n\r\nfile:///a\nfile:///c\r",
          { "file:///b", "file:///a", "file:///c" } },
        // Bytes that are not UTF-8, with escapes and without.
        { "file:///n%E4me%ff\nfile:///n\xE4me", { "file:///n%E4me%FF", "file:///n%E4me" } },
        { "file:///a%0Ab/100%25", { "file:///a%0Ab/100%25" } },
        // Broken escapes.
        { "file:///a%\nfile:///b%4\nfile:///c%zz",
          { "file:///a%25", "file:///b%254", "file:///c%25zz" } },
        { "file://localhost/a\nfile://" + own + "/b\nfile:/c",
          { "file:///a", "file:///b", "file:///c" } },
        // Another machine, no path, a zero byte.
        { "file://elsewhere/a\nfile://\nfile:x\nfile:///a%00b", {} },
        { "file:///a/b/\nfile:///a/./c/../d", { "file:///a/b/", "file:///a/d" } },
        { "file:///page.html#top", { "file:///page.html" } },
        { "https://Example.org/?a=b#c\nFILE:///a\nnonsense\n://",
          { "https://Example.org/?a=b#c", "file:///a" } },
        { QByteArray("file:///a\r\n\0\0", 13), { "file:///a" } },
    };
    for (const auto &[list, urls] : cases)
        EXPECT_EQ(spelled(list), urls) << list.constData();
}

TEST(DropFormatsTest, HostileDataIsReadToItsEnd)
{
    EXPECT_TRUE(spelled(QByteArray(100'000, '\n')).isEmpty());
    EXPECT_TRUE(spelled(QByteArray(100'000, '\0')).isEmpty());
    EXPECT_EQ(spelled("file:///" + QByteArray(100'000, '%')).size(), 1);
    for (const auto &type :
         { u"text/plain"_s, u"text/unicode"_s, u"text/html"_s, u"STRING"_s, u"UTF8_STRING"_s }) {
        SCOPED_TRACE(qPrintable(type));
        EXPECT_FALSE(DropFormats::text(type, {}));
        EXPECT_FALSE(DropFormats::text(type, QByteArray(3, '\0')));
        EXPECT_TRUE(DropFormats::text(type, "\xff\xfe\xfdx"));
    }
    EXPECT_FALSE(DropFormats::text(u"text/html"_s, QByteArray("<b>x").repeated(100'000)));
    for (const auto &type : { u"text/x-moz-url"_s, u"_NETSCAPE_URL"_s }) {
        EXPECT_FALSE(DropFormats::url(type, {}));
        EXPECT_FALSE(DropFormats::url(type, "x"));
        EXPECT_FALSE(DropFormats::url(type, QByteArray(100'000, '\0')));
    }
}

TEST(DropFormatsTest, TextIsDecodedAsItsTypeSays)
{
    const QString umlaut = u"\u00e4b"_s;
    const struct
    {
        QString type;
        QByteArray data;
        QString text;
    } cases[] = {
        { u"text/plain;charset=UTF-8"_s, "\xc3\xa4"_ba + "b", umlaut },
        { u"UTF8_STRING"_s, "\xc3\xa4"_ba + "b" + '\0', umlaut },
        { u"text/plain"_s, "\xc3\xa4"_ba + "b", umlaut },
        { u"text/plain"_s, "\xe4"_ba + "b", umlaut },
        { u"STRING"_s, "\xe4"_ba + "b", umlaut },
        { u"text/unicode"_s, utf16(umlaut), umlaut },
        { u"text/unicode"_s, utf16(u"\ufeff"_s + umlaut), umlaut },
        { u"text/unicode"_s, QByteArray("\0a\0b", 4), u"ab"_s },
        { u"text/html"_s, "<html><body> <a href=\"https://a.b/c\">title</a>\n",
          u"https://a.b/c"_s },
        { u"text/html"_s, "<img src=\"https://a.b/c.png\" alt=x>", u"https://a.b/c.png"_s },
        { u"text/html"_s, "<a href='https://a.b/'><img src='c.png'></a>", u"https://a.b/"_s },
        { u"text/html"_s, "<p>one <a href=\"https://a.b/\">two</a></p><p>three",
          u"one two\nthree"_s },
        { u"text/html"_s, utf16(u"<b>bold</b>"_s), u"bold"_s },
    };
    for (const auto &c : cases)
        EXPECT_EQ(DropFormats::text(c.type, c.data), c.text) << qPrintable(c.type) << c.data.data();
    const auto titled = u"https://B.org/%7e\nTitle"_s; // As browsers write it.
    for (const auto &url : { DropFormats::url(u"text/x-moz-url"_s, utf16(titled)),
                             DropFormats::url(u"_NETSCAPE_URL"_s, titled.toUtf8()) })
        EXPECT_EQ(url.value_or(Address()).text, "https://B.org/%7e");
}

TEST(DropFormatsTest, APageReadsNoFileThatItNames)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"style.css"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, folder.path().toUtf8().constData(), IN_OPEN), 0);

    const QByteArray address = "file://" + file.fileName().toUtf8();
    const QByteArray page = "<html><head><link rel='stylesheet' type='text/css' href='" + address
        + "'></head><body background='" + address + "'><table><tr><td style='background-image: url("
        + address + ")'>words<img src='" + address + "'></td></tr></table>";
    EXPECT_EQ(DropFormats::text(u"text/html"_s, page).value_or(QString()).trimmed(), u"words"_s);
    char event[4096];
    EXPECT_EQ(read(watch, event, sizeof event), -1) << "a file was opened";
    close(watch);
}

TEST(DropFormatsTest, TheBestTypeIsReadFirstAndUnknownOnesNever)
{
    const QString offer = u"text/html|STRING|text/plain|text/x-moz-url|text/plain;charset=utf-8|"_s;
    const auto offered = (offer + u"text/plain;charset=koi8-r"_s).split(u'|');
    EXPECT_EQ(DropFormats::textTypes(offered).join(u'|'),
              u"text/plain;charset=utf-8|text/plain|STRING|text/html"_s);
    EXPECT_EQ(DropFormats::urlTypes(offered), QStringList { u"text/x-moz-url"_s });

    EXPECT_TRUE(DropFormats::canHold(offered));
    EXPECT_TRUE(DropFormats::canHold({ u"x/y"_s, u"image/png"_s }));
    EXPECT_FALSE(DropFormats::canHold({ u"XdndDirectSave0"_s, u"application/octet-stream"_s }));
    EXPECT_TRUE(DropFormats::promisesFiles({ u"application/x-kde-ark-dndextract-path"_s }));
    EXPECT_FALSE(DropFormats::canHold({}));
}

TEST(DragFormatsTest, EachKindOfEntryIsOfferedAsItsTargetsTakeIt)
{
    const QUrl folder = FilePath::toUrl("/a b/raw_\xe4", FilePath::Kind::Directory);
    const QUrl file = FilePath::toUrl("/c");
    const QByteArray address = "https://Example.org/?q=%c3%a4";
    const Address link(QUrl(u"https://example.org/?q=\u00e4"_s), address);
    const QUrl text = FilePath::toUrl("/texts/a b.txt");
    const QUrl picture = FilePath::toUrl("/p.jpeg");
    const QByteArray both = "copy\nfile:///a%20b/raw_%E4\nfile:///c";
    const auto list = u"text/uri-list"_s, plain = u"text/plain"_s, jpeg = u"image/jpeg"_s;
    const auto gnome = u"x-special/gnome-copied-files"_s, mate = u"x-special/mate-copied-files"_s;
    const auto none = QByteArray("none");
    const struct
    {
        const char *what;
        QList<Address> urls;
        QList<std::pair<QString, QByteArray>> drag, clipboard; // A path stands for its content.
    } cases[] = {
        { "files",
          { folder, file },
          { { list, "file:///a%20b/raw_%E4\r\nfile:///c\r\n" }, { plain, none } },
          { { gnome, both },
            { mate, both },
            { list, "file:///a%20b/raw_%E4\r\nfile:///c\r\n" },
            { u"application/x-kde-cutselection"_s, "0" },
            { plain, "/a b/raw_\xEF\xBF\xBD\n/c" } } },
        { "a file and a link",
          { file, link },
          { { list, "file:///c\r\n" + address + "\r\n" }, { plain, address } },
          { { list, "file:///c\r\n" }, { plain, "/c\n" + address } } },
        { "links",
          { link },
          { { list, none }, { plain, address } },
          { { list, none }, { gnome, none }, { plain, address } } },
        { "a text of ours",
          { text },
          { { list, "file:///texts/a%20b.txt\r\n" }, { plain, "/texts/a b.txt" } },
          { { mate, "copy\nfile:///texts/a%20b.txt" }, { plain, "/texts/a b.txt" } } },
        { "two texts of ours", { text, text }, { { plain, none } }, {} },
        { "a text of others", { FilePath::toUrl("/c.txt") }, { { plain, none } }, {} },
        { "a picture",
          { picture },
          { { list, "file:///p.jpeg\r\n" }, { jpeg, "/p.jpeg" }, { plain, none } },
          { { jpeg, "/p.jpeg" }, { plain, "/p.jpeg" } } },
        { "two pictures", { picture, picture }, { { jpeg, none } }, { { jpeg, none } } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const auto drag = DragFormats::formatsFor(c.urls, "/texts");
        // Targets prefer the first.
        EXPECT_EQ(drag.first().type == list, c.urls != QList { link });
        for (const auto &[formats, expected] :
             { std::pair(drag, c.drag),
               std::pair(DragFormats::clipboardFormatsFor(c.urls, "/texts"), c.clipboard) }) {
            QHash<QString, QByteArray> byType;
            for (const auto &format : formats)
                byType.insert(format.type, format.data + format.path);
            for (const auto &[type, data] : expected)
                EXPECT_EQ(byType.value(type, none), data) << qPrintable(type);
            const QByteArray titled = byType.value(u"text/x-moz-url"_s);
            EXPECT_EQ(DropFormats::url(u"text/x-moz-url"_s, titled).value_or(Address()).text,
                      c.urls.contains(link) ? address : QByteArray());
        }
    }
}
