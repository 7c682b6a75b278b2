#include "platform/linux/session/ApplicationResolver.h"

#include "base/NativeFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace std::string_literals;
using namespace Qt::Literals::StringLiterals;

/// A made-up process folder and two made-up applications folders.
struct World
{
    QByteArray at(const QByteArray &name) const
    {
        return QFile::encodeName(root.path()) + '/' + name;
    }
    void write(const QByteArray &name, const QByteArray &text)
    {
        NativeFile::remove(at(name));
        ASSERT_TRUE(NativeFile::writeNew(at(name), text));
    }
    void install(const QByteArray &name, const QByteArray &exec, const QByteArray &more = {})
    {
        write(name + ".desktop",
              "[Desktop Entry]\nType=Application\nName[de]=x\nExec=" + exec + '\n' + more
                  + "\n[Desktop Action New]\nExec=other --new\n");
    }
    void run(const QByteArray &executable, const QByteArray &commandLine)
    {
        write("proc/7/cmdline", commandLine);
        ::unlink(at("proc/7/exe").constData());
        const QByteArray target = executable.isEmpty() ? QByteArray("none") : executable;
        EXPECT_EQ(::symlink(target.constData(), at("proc/7/exe").constData()), 0);
    }
    /// The start time tells the resolver that the process is another one.
    void restart()
    {
        write("proc/7/stat",
              "7 (a ) b) S 1 1 1 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 " + QByteArray::number(++start));
    }
    std::string identifier() { return resolver.identifier(7).toStdString(); }

    int start = 0;
    QTemporaryDir root;
    ApplicationResolver resolver { root.filePath(u"proc"_s),
                                   { root.filePath(u"user"_s), root.filePath(u"system"_s) } };
};

QByteArray words(const std::string &text)
{
    return QByteArray::fromStdString(text); // With its zero bytes.
}

TEST(ApplicationResolverTest, UnitNamesOfDesktopsHoldTheId)
{
    const std::pair<const char *, const char *> cases[] = {
        { "app-gnome-org.gnome.Nautilus-1234.scope", "org.gnome.Nautilus" },
        { "app-org.kde.dolphin-9f3a.scope", "org.kde.dolphin" },
        { "app-gnome-firefox\\x2desr-1234.scope", "firefox-esr" },
        { "app-flatpak-org.mozilla.firefox-77.scope", "org.mozilla.firefox" },
        { "app-org.kde.dolphin@3d1f.service", "org.kde.dolphin" },
        { "app-org.kde.kded@autostart.service", "org.kde.kded" },
        { "app-gnome-pcmanfm\\x2dqt.service", "pcmanfm-qt" },
        { "dbus-:1.2-org.gnome.gedit@0.service", "org.gnome.gedit" },
        { "session-2.scope", "" },
        { "app.slice", "" },
        { "vte-spawn-0a1b.scope", "" },
        { "app-\\x", "" },
    };
    for (const auto &[unit, identifier] : cases)
        EXPECT_EQ(applicationInUnit(QString::fromLatin1(unit)).toStdString(), identifier) << unit;
}

TEST(ApplicationResolverTest, TheSurestWitnessIsHeardFirst)
{
    World w;
    w.install("system/org.x.Unit", "unit");
    w.install("system/thunar", "thunar %F");
    EXPECT_EQ(w.identifier(), ""); // No such process.
    w.run("/usr/bin/thunar", words("thunar\0--daemon\0"s));
    w.restart();
    EXPECT_EQ(w.identifier(), "thunar");

    w.write("proc/7/cgroup",
            "0::/user.slice/user@0.service/app.slice/app-gnome-org.x.Unit-5.scope\n");
    EXPECT_EQ(w.identifier(), "thunar"); // The same process still: what was found holds.
    w.restart();
    EXPECT_EQ(w.identifier(), "org.x.Unit");

    const QByteArray launched = "GIO_LAUNCHED_DESKTOP_FILE=" + QFile::encodeName(w.root.path())
        + words("/system/kde/view.desktop\0GIO_LAUNCHED_DESKTOP_FILE_PID="s);
    w.write("proc/7/environ", launched + words("6\0A=b\0"s));
    w.restart();
    EXPECT_EQ(w.identifier(), "org.x.Unit"); // The mark is its parent's.
    w.write("proc/7/environ", launched + words("7\0A=b\0"s));
    w.restart();
    EXPECT_EQ(w.identifier(), "kde-view");

    w.write("proc/7/root/.flatpak-info",
            "[Application]\nname=org.x.Sandboxed\n[Instance]\nname=no\n");
    w.restart();
    EXPECT_EQ(w.identifier(), "org.x.Sandboxed");
}

TEST(ApplicationResolverTest, EntriesAreToldApartByProgramAndArguments)
{
    const struct
    {
        QByteArray executable;
        std::string words;
        const char *identifier;
    } cases[] = {
        { "/usr/bin/thunar", "thunar\0"s, "thunar" },
        { "/usr/bin/thunar", "thunar\0--bulk-rename\0/a\0"s, "bulk" },
        { "/usr/bin/thunar (deleted)", "/usr/bin/thunar\0"s, "thunar" }, // By an update.
        { "/usr/lib/fox-esr/fox-esr", "fox\0"s, "fox" }, // Behind a wrapper.
        { "/opt/fox/fox-esr", "/opt/fox/fox-esr\0"s, "fox-own" },
        { "/usr/bin/python3.11", "/usr/bin/python3\0-s\0/usr/bin/find-it\0"s, "kde-find" },
        { "/usr/lib/office/soffice.bin", "/usr/lib/office/soffice.bin\0--writer\0"s, "writer" },
        { "/usr/bin/gone", "gone\0"s, "" }, // Hidden by the user.
        { "/usr/bin/flatpak", "flatpak\0run\0"s, "" },
        { "/usr/bin/unknown", "unknown\0"s, "" },
        { "", "", "" },
    };
    World w;
    w.install("system/bulk", "thunar --bulk-rename %F");
    w.install("system/settings", "thunar --settings", "NoDisplay=true");
    w.install("system/thunar", "thunar %F");
    w.install("system/fox", "/usr/lib/fox-esr/fox-esr %u");
    w.install("user/fox-own", "/opt/fox/fox-esr %u");
    w.install("system/kde/find", "find-it --path=%f");
    w.install("system/calc", "env A=b soffice --calc %U");
    w.install("system/writer", "env A=b soffice --writer %U");
    w.install("system/gone", "gone");
    w.install("user/gone", "gone", "Hidden=true");
    w.install("system/org.x.App", "/usr/bin/flatpak run org.x.App", "X-Flatpak=org.x.App");
    w.write("system/broken.desktop", "[Desktop Entry\nExec");
    for (const auto &c : cases) {
        SCOPED_TRACE(c.words);
        w.run(c.executable, words(c.words));
        w.restart();
        EXPECT_EQ(w.identifier(), c.identifier);
    }
}

TEST(ApplicationResolverTest, EntriesThatComeLaterAreSeen)
{
    World w;
    // The file system's clock ticks in milliseconds: two changes within one look like one.
    const timespec longAgo[2] = {};
    ASSERT_TRUE(NativeFile::makeFolder(w.at("system")));
    ::utimensat(AT_FDCWD, w.at("system").constData(), longAgo, 0);
    DesktopEntries entries({ w.root.filePath(u"system"_s), w.root.filePath(u"missing"_s) });
    EXPECT_FALSE(entries.contains(u"late"_s));
    w.install("system/late", "late");
    w.install("missing/later", "later");
    EXPECT_TRUE(entries.contains(u"late"_s) && entries.contains(u"later"_s));
}

}
