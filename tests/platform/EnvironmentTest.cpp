#include "platform/linux/CommandLine.h"
#include "platform/linux/SystemLanguages.h"
#include "platform/linux/XdgAutostart.h"
#include "platform/linux/XdgDirectories.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <map>

namespace {

/// Sets variables for one case and puts the old ones back; null unsets.
class Environment
{
public:
    void set(const char *name, const char *value)
    {
        if (!m_old.count(name))
            m_old[name]
                = qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt;
        if (value != nullptr)
            qputenv(name, value);
        else
            qunsetenv(name);
    }
    ~Environment()
    {
        for (const auto &[name, value] : m_old) {
            if (value)
                qputenv(name, *value);
            else
                qunsetenv(name);
        }
    }

private:
    std::map<const char *, std::optional<QByteArray>> m_old;
};

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}

TEST(SystemLanguagesTest, TheEnvironmentIsReadAsGettextReadsIt)
{
    struct Case
    {
        const char *language, *all, *messages, *lang;
        QStringList tags;
    };
    const Case cases[] = {
        { nullptr, nullptr, nullptr, nullptr, {} },
        { nullptr, nullptr, nullptr, "de_AT.UTF-8@euro", { u"de-AT"_qs } },
        { nullptr, "fr_FR", "es_ES", "de_DE", { u"fr-FR"_qs } },
        { nullptr, "", "es_ES", "de_DE", { u"es-ES"_qs } },
        { "zh_TW:zh:en", nullptr, nullptr, "zh_TW.UTF-8", { u"zh-TW"_qs, u"zh"_qs, u"en"_qs } },
        { "de", nullptr, nullptr, "fr_FR.UTF-8", { u"de"_qs, u"fr-FR"_qs } },
        { "de", "C", nullptr, "fr_FR.UTF-8", {} },
        { "de", nullptr, nullptr, "C.UTF-8", {} },
        { ":de::POSIX", nullptr, nullptr, "en_US", { u"de"_qs, u"en-US"_qs } },
        { nullptr, nullptr, nullptr, "sr_RS.UTF-8@latin", { u"sr-Latn-RS"_qs } },
        { nullptr, nullptr, nullptr, "ca_ES@valencia", { u"ca-ES-valencia"_qs } },
        { "../../etc:a b:%s:überlang", nullptr, nullptr, "ja_JP", { u"ja-JP"_qs } },
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
    struct Case
    {
        QByteArray file, downloads;
    };
    const Case cases[] = {
        { "# XDG_DOWNLOAD_DIR=\"/commented\"\n", "" },
        { "XDG_DOWNLOAD_DIR=\"$HOME/Geladenes\"\nXDG_MUSIC_DIR=\"/m\"\n", "/home/anna/Geladenes" },
        { "XDG_DOWNLOAD_DIR=\"/mnt/a \\\"b\\\" \\$c/\"", "/mnt/a \"b\" $c" },
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
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file.toStdString());
        write(config.filePath(u"user-dirs.dirs"_qs), c.file);
        EXPECT_EQ(XdgDirectories::fromEnvironment().downloads, c.downloads);
    }
}

TEST(XdgAutostartTest, OnWritesAnEntryAndOffRemovesIt)
{
    const QTemporaryDir config;
    const QString path = config.filePath(u"autostart/app.vantleapp.Vantle.desktop"_qs);
    XdgAutostart autostart(config.path().toUtf8(), "/opt/my $x\\%/van\"tle");
    EXPECT_FALSE(autostart.enabled());
    EXPECT_EQ(autostart.setEnabled(false), std::nullopt);
    EXPECT_EQ(autostart.setEnabled(true), std::nullopt);
    EXPECT_TRUE(autostart.enabled());
    const QByteArray entry = read(path);
    EXPECT_TRUE(entry.contains("\nExec=\"/opt/my \\\\$x\\\\\\\\%%/van\\\\\"tle\"\n"))
        << entry.data();
    EXPECT_TRUE(entry.contains("\nTryExec=/opt/my $x\\\\%/van\"tle\n")) << entry.data();

    EXPECT_EQ(autostart.setEnabled(false), std::nullopt);
    EXPECT_FALSE(autostart.enabled());
    EXPECT_FALSE(QFile::exists(path));
}

TEST(XdgAutostartTest, AnEntryThatTheSessionSwitchedOffCountsAsOffUntilItIsSwitchedOnHere)
{
    const QTemporaryDir config;
    QDir(config.path()).mkdir(u"autostart"_qs);
    const QString path = config.filePath(u"autostart/app.vantleapp.Vantle.desktop"_qs);
    struct Case
    {
        QByteArray entry;
        bool enabled;
    };
    const Case cases[] = {
        { "[Desktop Entry]\nExec=vantle\n", true },
        { "[Desktop Entry]\nExec=vantle\nHidden = true\n", false },
        { "[Desktop Entry]\nX-GNOME-Autostart-enabled=false\nExec=vantle\n", false },
        { "[Desktop Entry]\nHidden=false\n[Desktop Action x]\nHidden=true\n", true },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.entry.toStdString());
        write(path, c.entry);
        XdgAutostart autostart(config.path().toUtf8(), "/usr/bin/vantle");
        EXPECT_EQ(autostart.enabled(), c.enabled);
        EXPECT_EQ(autostart.setEnabled(true), std::nullopt);
        EXPECT_TRUE(autostart.enabled());
    }
}

TEST(XdgAutostartTest, ARefusalTellsItsReason)
{
    const QTemporaryDir config;
    write(config.filePath(u"autostart"_qs), "a file where the folder should be");
    XdgAutostart autostart(config.path().toUtf8(), "/usr/bin/vantle");
    EXPECT_TRUE(autostart.setEnabled(true).value_or(QString()).contains(u"directory"_qs));
    EXPECT_TRUE(autostart.setEnabled(false).value_or(QString()).contains(u"directory"_qs));
}

TEST(CommandLineTest, QuestionsAndMistakesAreAnsweredAndNothingElseIs)
{
    const struct
    {
        QByteArrayList arguments;
        std::optional<int> status;
        const char *said;
    } cases[] = {
        { {}, {}, "" },
        { { "a.txt", "-", "--", "--version" }, {}, "" },
        { { "-platform", "--version", "--style=fusion", "-reverse" }, {}, "" },
        { { "a.txt", "--version" }, 0, "vantle " },
        { { "-h" }, 0, "Usage: vantle" },
        { { "--verbose", "--help" }, 2, "'--verbose'" },
        { { "-x" }, 2, "'-x'" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').constData());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_EQ(CommandLine::answered(c.arguments), c.status);
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string errors = testing::internal::GetCapturedStderr();
        EXPECT_NE((c.status == 0 ? out : errors).find(c.said), std::string::npos);
        EXPECT_TRUE((c.status == 0 ? errors : out).empty());
    }
}
