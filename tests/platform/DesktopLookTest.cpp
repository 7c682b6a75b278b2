#include "platform/linux/LookSources.h"
#include "platform/linux/ThemeIcons.h"
#include "platform/linux/TrayLabel.h"
#include "platform/linux/x11/XSettings.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>

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
        QDir(m_folder.path()).mkpath(QStringLiteral("breeze/32"));
        QFile index(m_folder.filePath(QStringLiteral("breeze/index.theme")));
        EXPECT_TRUE(index.open(QIODevice::WriteOnly));
        index.write("[Icon Theme]\nName=Test\nDirectories=32\n[32]\nSize=32\n");
        QIcon::setThemeSearchPaths({ m_folder.path() });
    }
    ~Theme()
    {
        QIcon::setThemeSearchPaths(m_paths);
        QIcon::setThemeName(m_name);
        QIcon::setFallbackThemeName(m_fallback);
    }
    void add(const char *name, Qt::GlobalColor color) const
    {
        QImage image(32, 32, QImage::Format_RGB32);
        image.fill(color);
        const QString file = QStringLiteral("breeze/32/%1.png").arg(QLatin1String(name));
        EXPECT_TRUE(image.save(m_folder.filePath(file)));
    }
    QString ownPictures() const
    {
        draw(QStringLiteral("document.svg"), "black");
        draw(QStringLiteral("web-page.svg"), "white");
        return m_folder.path();
    }

private:
    void draw(const QString &name, const QByteArray &color) const
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 1 1'><rect width='1' "
                   "height='1' fill='"
                   + color + "'/></svg>");
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
        return XSettings::Settings { { "Net/ThemeName", QLatin1String(name) } };
    };
    const char *const scheme = "org.freedesktop.appearance color-scheme";
    const char *const scale = "org.gnome.desktop.interface text-scaling-factor";
    struct Case
    {
        const char *what;
        LookSources sources;
        DesktopLook look;
    };
    const auto motion = Motion::Reduced;
    const Case cases[] = {
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
    theme.add("application-pdf", Qt::red);
    theme.add("folder", Qt::blue);
    theme.add("x-office-document", Qt::green); // What office types have in common.
    ThemeIcons icons(theme.ownPictures());
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
    struct Case
    {
        QString title, notifier, embedded;
    };
    const Case cases[] = {
        { u"Quit"_qs, u"Quit"_qs, u"Quit"_qs },
        { u"a_b__c"_qs, u"a__b____c"_qs, u"a_b__c"_qs },
        // Over the bus the first one becomes an underscore: "_R & D & more".
        { u"R & D & more"_qs, u"&R & D & more"_qs, u"R && D && more"_qs },
        { u"Show\t(Ctrl+S)"_qs, u"Show (Ctrl+S)"_qs, u"Show (Ctrl+S)"_qs },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.title.toStdString());
        EXPECT_EQ(trayLabel(c.title, TrayKind::Notifier), c.notifier);
        EXPECT_EQ(trayLabel(c.title, TrayKind::Embedded), c.embedded);
    }
}
