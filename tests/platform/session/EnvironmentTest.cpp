#include "base/NativeFile.h"
#include "platform/linux/session/ScreenshotFolder.h"
#include "platform/linux/session/SystemLanguages.h"
#include "platform/linux/session/XdgAutostart.h"
#include "platform/linux/session/XdgDirectories.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

using namespace Qt::StringLiterals;

namespace {

/// Sets variables for one case and puts the old ones back; null unsets.
class Environment
{
public:
    void set(const char *name, const char *value)
    {
        m_old.try_emplace(name, qgetenv(name));
        value != nullptr ? qputenv(name, value) : qunsetenv(name);
    }
    ~Environment()
    {
        for (const auto &[name, value] : m_old)
            value.isNull() ? qunsetenv(name) : qputenv(name, value);
    }

private:
    std::map<const char *, QByteArray> m_old; // Null: it was not set.
};

void write(const QString &path, const QByteArray &bytes)
{
    NativeFile::remove(path.toUtf8());
    ASSERT_TRUE(NativeFile::writeNew(path.toUtf8(), bytes));
}

}

TEST(SystemLanguagesTest, TheEnvironmentIsReadAsGettextReadsIt)
{
    const struct
    {
        const char *language, *all, *messages, *lang;
        QStringList tags;
    } cases[] = {
        { nullptr, nullptr, nullptr, nullptr, {} },
        { nullptr, nullptr, nullptr, "de_AT.UTF-8@euro", { u"de-AT"_s } },
        { nullptr, "fr_FR", "es_ES", "de_DE", { u"fr-FR"_s } },
        { nullptr, "", "es_ES", "de_DE", { u"es-ES"_s } },
        { "zh_TW:zh:en", nullptr, nullptr, "zh_TW.UTF-8", { u"zh-TW"_s, u"zh"_s, u"en"_s } },
        { "de", nullptr, nullptr, "fr_FR.UTF-8", { u"de"_s, u"fr-FR"_s } },
        { "de", "C", nullptr, "fr_FR.UTF-8", {} },
        { "de", nullptr, nullptr, "C.UTF-8", {} },
        { ":de::POSIX", nullptr, nullptr, "en_US", { u"de"_s, u"en-US"_s } },
        { "../../etc:a b:%s:überlang", nullptr, nullptr, "ja_JP", { u"ja-JP"_s } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.tags.join(u' ').toStdString());
        Environment environment;
        environment.set("LANGUAGE", c.language);
        environment.set("LC_ALL", c.all);
        environment.set("LC_MESSAGES", c.messages);
        environment.set("LANG", c.lang);
        EXPECT_EQ(SystemLanguages::fromEnvironment(), c.tags);
    }
}

TEST(XdgDirectoriesTest, OnlyAbsolutePathsCount)
{
    Environment environment;
    environment.set("HOME", "/home/anna/");
    environment.set("XDG_DATA_HOME", "relative");
    environment.set("XDG_CONFIG_HOME", "/elsewhere/config//");
    environment.set("XDG_STATE_HOME", nullptr);
    const auto directories = XdgDirectories::fromEnvironment();
    EXPECT_EQ(directories.home, "/home/anna");
    EXPECT_EQ(directories.data, "/home/anna/.local/share");
    EXPECT_EQ(directories.config, "/elsewhere/config");
    EXPECT_EQ(directories.state, "/home/anna/.local/state");
    EXPECT_EQ(directories.downloads, "");

    environment.set("HOME", "not/absolute");
    EXPECT_TRUE(XdgDirectories::fromEnvironment().home.startsWith('/'));
}

TEST(XdgDirectoriesTest, TheDownloadsFolderIsTheOneThatTheDesktopNames)
{
    const std::pair<QByteArray, QByteArray> cases[] = {
        { "# XDG_DOWNLOAD_DIR=\"/commented\"\n", "" },
        { "XDG_DOWNLOAD_DIR=\"$HOME/Geladenes\"\nXDG_MUSIC_DIR=\"/m\"\n", "/home/anna/Geladenes" },
        { R"(XDG_DOWNLOAD_DIR="/mnt/a \"b\" \$c/")", "/mnt/a \"b\" $c" },
        { "XDG_DOWNLOAD_DIR=\"/one\"\n  XDG_DOWNLOAD_DIR = \"/two\"\n", "/two" },
        { "XDG_DOWNLOAD_DIR=\"$HOME/\"\n", "" },
        { "XDG_DOWNLOAD_DIR=\"$HOMER/x\"\n", "" },
        { "XDG_DOWNLOAD_DIR=\"relative\"\n", "" },
        { "XDG_DOWNLOAD_DIR=/unquoted\n", "" },
        { "XDG_DOWNLOAD_DIR=\"/bytes\xff\"\n", "/bytes\xff" },
    };
    const QTemporaryDir config;
    Environment environment;
    environment.set("HOME", "/home/anna");
    environment.set("XDG_CONFIG_HOME", qPrintable(config.path()));
    for (const auto &[file, downloads] : cases) {
        write(config.filePath(u"user-dirs.dirs"_s), file);
        EXPECT_EQ(XdgDirectories::fromEnvironment().downloads, downloads) << file.constData();
    }
}

TEST(XdgAutostartTest, OnWritesAnEntryAndOffRemovesItAndTheSessionMaySwitchItOff)
{
    const QTemporaryDir config;
    const QString path = config.filePath(u"autostart/app.vantleapp.Vantle.desktop"_s);
    XdgAutostart autostart(config.path().toUtf8(), "/opt/my $x\\%/van\"tle");
    EXPECT_FALSE(autostart.enabled());
    EXPECT_EQ(autostart.setEnabled(false), std::nullopt);
    EXPECT_EQ(autostart.setEnabled(true), std::nullopt);
    EXPECT_TRUE(autostart.enabled());
    const auto entry = NativeFile::read(path.toUtf8()).bytes.value_or(QByteArray()).split('\n');
    EXPECT_TRUE(entry.contains("Exec=\"/opt/my \\\\$x\\\\\\\\%%/van\\\\\"tle\""));
    EXPECT_TRUE(entry.contains("TryExec=/opt/my $x\\\\%/van\"tle"));

    const std::pair<QByteArray, bool> cases[] = {
        { "[Desktop Entry]\nExec=vantle\n", true },
        { "[Desktop Entry]\nExec=vantle\nHidden = true\n", false },
        { "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\nExec=vantle\n", false },
        { "[Desktop Entry]\nHidden=false\n[Desktop Action x]\nHidden=true\n", true },
    };
    for (const auto &[written, enabled] : cases) {
        SCOPED_TRACE(written.constData());
        write(path, written);
        EXPECT_EQ(autostart.enabled(), enabled);
        EXPECT_EQ(autostart.setEnabled(true), std::nullopt);
        EXPECT_TRUE(autostart.enabled());
    }
    EXPECT_EQ(autostart.setEnabled(false), std::nullopt);
    EXPECT_FALSE(QFile::exists(path));

    // A refusal tells its reason.
    ASSERT_TRUE(QDir(config.path()).rmdir(u"autostart"_s));
    write(config.filePath(u"autostart"_s), "a file where the folder should be");
    for (const bool on : { true, false })
        EXPECT_TRUE(autostart.setEnabled(on).value_or(QString()).contains(u"directory"_s));
}

TEST(ScreenshotFolder, IsWhatTheRunningDesktopSays)
{
    const QTemporaryDir directory;
    Directories directories;
    directories.home = directory.path().toUtf8();
    directories.config = directories.home + "/.config";
    directories.pictures = directories.home + "/Bilder";
    const QByteArray fallback = directories.pictures + "/Screenshots";
    const auto folder = [&](const char *desktop) {
        return screenshotFolder(directories, QString::fromLatin1(desktop).split(QLatin1Char(':')));
    };
    for (const char *desktop : { "", "KDE", "XFCE", "ubuntu:GNOME", "Openbox" })
        EXPECT_EQ(folder(desktop), fallback) << desktop;

    const auto tell = [&](const char *name, const QByteArray &bytes) {
        write(directory.filePath(u".config"_s + QLatin1String(name)), bytes);
    };
    tell("/flameshot/flameshot.ini", "[Shortcuts]\nsavePath=/wrong\n[General]\nsavePath=/shots/\n");
    tell("/spectaclerc", "[Save]\ndefaultSaveLocation=file:///old%20place/\n");
    tell("/xfce4/xfce4-screenshooter", "app=none\nscreenshot_dir=~/xfce old\n");
    EXPECT_EQ(folder("KDE"), "/old place");
    EXPECT_EQ(folder("XFCE"), directories.home + "/xfce old");
    EXPECT_EQ(folder("Openbox"), "/shots");
    EXPECT_EQ(folder("GNOME"), fallback) << "whose own tool has no such setting";

    tell("/spectaclerc",
         "[ImageSave]\nimageSaveLocation[$e]=file://$HOME/new/\n"
         "[Save]\ndefaultSaveLocation=file:///old/\n");
    tell("/xfce4/xfconf/xfce-perchannel-xml/xfce4-screenshooter.xml",
         R"(<channel name="xfce4-screenshooter" version="1.0"><property name="actions"/>
          <property name="screenshot-dir" type="string" value="file:///new/xfce"/></channel>)");
    EXPECT_EQ(folder("KDE"), directories.home + "/new");
    EXPECT_EQ(folder("XFCE"), "/new/xfce");
    tell("/xfce4/xfconf/xfce-perchannel-xml/xfce4-screenshooter.xml", "<channel><broken");
    EXPECT_EQ(folder("XFCE"), directories.home + "/xfce old");
}
