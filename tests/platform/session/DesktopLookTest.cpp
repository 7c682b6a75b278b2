#include "base/NativeFile.h"
#include "platform/linux/session/LinuxLook.h"
#include "platform/linux/session/ThemeIcons.h"
#include "platform/linux/session/TrayItem.h"
#include "platform/linux/x11/XSettings.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

/// The property of a settings manager, in either byte order.
class Property
{
public:
    explicit Property(bool bigEndian)
        : m_bigEndian(bigEndian)
    {
    }
    Property &number(auto value)
    {
        const auto ordered = m_bigEndian ? qToBigEndian(value) : qToLittleEndian(value);
        m_bytes.append(reinterpret_cast<const char *>(&ordered), sizeof ordered);
        return *this;
    }
    Property &text(const QByteArray &value)
    {
        m_bytes += value + QByteArray((4 - value.size() % 4) % 4, '\0');
        return *this;
    }
    Property &head(quint32 count)
    {
        return text(QByteArray(m_bigEndian ? "\1\0\0\0" : "\0\0\0\0", 4))
            .number(quint32(7))
            .number(count);
    }
    Property &setting(quint8 type, const QByteArray &name)
    {
        m_bytes += char(type) + QByteArray(1, '\0');
        return number(quint16(name.size())).text(name).number(quint32(3));
    }
    const QByteArray &bytes() const { return m_bytes; }

private:
    bool m_bigEndian;
    QByteArray m_bytes;
};

/// An icon theme with a picture of one colour for each name.
class Theme
{
public:
    Theme()
    {
        write("breeze/index.theme", "[Icon Theme]\nName=Test\nDirectories=32\n[32]\nSize=32\n");
        QIcon::setThemeSearchPaths({ m_folder.path() });
    }
    ~Theme()
    {
        QIcon::setThemeSearchPaths(m_paths);
        QIcon::setThemeName(m_name);
        QIcon::setFallbackThemeName(m_fallback);
    }
    /// A picture of that colour; a name without a folder is one of our own.
    void draw(const QByteArray &name, const QByteArray &color) const
    {
        write(name + ".svg",
              "<svg xmlns='http://www.w3.org/2000/svg' width='32' height='32'>"
              "<rect width='32' height='32' fill='"
                  + color + "'/></svg>");
    }
    QString folder() const { return m_folder.path(); }

private:
    void write(const QByteArray &name, const QByteArray &bytes) const
    {
        EXPECT_TRUE(NativeFile::writeNew(m_folder.path().toUtf8() + '/' + name, bytes));
    }

    QTemporaryDir m_folder;
    QStringList m_paths = QIcon::themeSearchPaths();
    QString m_name = QIcon::themeName();
    QString m_fallback = QIcon::fallbackThemeName();
};

QColor colorOf(const QIcon &icon)
{
    return icon.pixmap(QSize(32, 32), 1.0).toImage().pixelColor(16, 16);
}

}

TEST(XSettingsTest, NumbersAndTextsAreReadInBothByteOrders)
{
    for (const bool bigEndian : { false, true }) {
        SCOPED_TRACE(bigEndian);
        Property property(bigEndian);
        property.head(3).setting(1, "Net/IconThemeName").number(quint32(5)).text("Tango");
        property.setting(2, "Gtk/Colour").number(quint64(1));
        property.setting(0, "Net/EnableEventSounds").number(qint32(-2));
        const auto settings = XSettings::parse(property.bytes());
        EXPECT_EQ(settings.value("Net/IconThemeName").toString(), QStringLiteral("Tango"));
        EXPECT_EQ(settings.value("Net/EnableEventSounds").toInt(), -2);
    }
}

TEST(XSettingsTest, ADamagedPropertyGivesWhatStandsBeforeTheFault)
{
    Property good(false);
    good.head(0xFFFFFFFF).setting(0, "a").number(qint32(1));
    Property longText = good;
    longText.setting(1, "b").number(quint32(0xFFFFFFFF)).text("short");
    Property unknown = good;
    unknown.setting(9, "b").number(qint32(1));
    for (const auto &bytes : { good.bytes(), longText.bytes(), unknown.bytes() })
        EXPECT_EQ(XSettings::parse(bytes).size(), 1);
    // Wherever it is cut off.
    for (qsizetype size = 0; size < good.bytes().size(); ++size)
        EXPECT_TRUE(XSettings::parse(good.bytes().left(size)).isEmpty());
}

TEST(LookSourcesTest, ThePortalSpeaksFirstAndEveryWishForEaseCounts)
{
    using Scheme = DesktopLook::Scheme;
    using Contrast = DesktopLook::Contrast;
    const auto portal = [](const char *key, const QVariant &value) {
        return QHash<QString, QVariant> { { QLatin1String(key), value } };
    };
    const auto theme = [](const char *name) {
        return ManagedSettings { { "Net/ThemeName", QLatin1String(name) } };
    };
    const char *const scheme = "org.freedesktop.appearance color-scheme";
    const char *const scale = "org.gnome.desktop.interface text-scaling-factor";
    const auto motion = Motion::Reduced;
    const struct
    {
        const char *what;
        LookSources sources;
        DesktopLook look;
    } cases[] = {
        { "nothing", {}, {} },
        { "dark", { portal(scheme, 1U), theme("Adwaita") }, { Scheme::Dark } },
        { "light over a dark theme", { portal(scheme, 2U), theme("X-dark") }, { Scheme::Light } },
        { "no preference, dark theme", { portal(scheme, 0U), theme("X-Dark") }, { Scheme::Dark } },
        { "unknown number", { portal(scheme, 9U), {} }, {} },
        { "contrast",
          { portal("org.gnome.desktop.a11y.interface high-contrast", true), {} },
          { Scheme::NoPreference, Contrast::High } },
        { "contrast's theme",
          { {}, theme("HighContrastInverse") },
          { Scheme::Dark, Contrast::High } },
        { "no animations",
          { portal("org.gnome.desktop.interface enable-animations", false), {} },
          { {}, {}, motion } },
        { "none, by the manager",
          { portal("org.gnome.desktop.interface enable-animations", true),
            { { "Gtk/EnableAnimations", 0 } } },
          { {}, {}, motion } },
        { "text", { portal(scale, 1.5), {} }, { {}, {}, {}, 1.5 } },
        { "too large", { portal(scale, 1e9), {} }, { {}, {}, {}, 3 } },
        { "no number", { portal(scale, NAN), {} }, {} },
        { "the toolkit scales", { portal(scale, 1.5), { { "Xft/DPI", 147456 } } }, {} },
        { "of another kind", { portal(scheme, QStringLiteral("dark")), theme("") }, {} },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_TRUE(c.sources.look() == c.look);
    }
}

TEST(ThemeIconsTest, TheNameAloneDecidesAndWhatTheThemeLacksIsOurs)
{
    const Theme theme;
    theme.draw("breeze/32/application-pdf", "red");
    theme.draw("breeze/32/folder", "blue");
    theme.draw("breeze/32/x-office-document", "lime"); // What office types have in common.
    theme.draw("document", "black");
    theme.draw("web-page", "white");
    ThemeIcons icons(theme.folder(), [] { return ManagedSettings(); });
    const auto color
        = [&](const char *address) { return colorOf(icons.forFile(QUrl(QLatin1String(address)))); };
    EXPECT_EQ(color("file:///nowhere/A%20b.PDF"), QColor(Qt::red));
    EXPECT_EQ(color("file:///nowhere/%FF%0A.pdf"), QColor(Qt::red));
    EXPECT_EQ(color("file:///nowhere/a.pdf/"), QColor(Qt::blue));
    EXPECT_EQ(color("file:///nowhere/a.odt"), QColor(Qt::green));
    EXPECT_EQ(color("file:///nowhere/a.mp3"), QColor(Qt::black));
    EXPECT_EQ(color("file:///nowhere/pdf"), QColor(Qt::black));
    EXPECT_EQ(colorOf(icons.forWebLocation()), QColor(Qt::white));
}

TEST(TrayLabelTest, MarksOfMnemonicsAreWrittenSoThatTheyShow)
{
    const struct
    {
        QString title, notifier, embedded;
    } cases[] = {
        { u"Quit"_s, u"Quit"_s, u"Quit"_s },
        { u"a_b__c"_s, u"a__b____c"_s, u"a_b__c"_s },
        // Over the bus the first one becomes an underscore: "_R & D & more".
        { u"R & D & more"_s, u"&R & D & more"_s, u"R && D && more"_s },
        { u"Show\t(Ctrl+S)"_s, u"Show (Ctrl+S)"_s, u"Show (Ctrl+S)"_s },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.title.toStdString());
        EXPECT_EQ(trayLabel(c.title, TrayKind::Notifier), c.notifier);
        EXPECT_EQ(trayLabel(c.title, TrayKind::Embedded), c.embedded);
    }
}
