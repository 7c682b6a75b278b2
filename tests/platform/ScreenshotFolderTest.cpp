#include "platform/linux/ScreenshotFolder.h"

#include "base/NativeFile.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(ScreenshotFolder, IsWhatTheRunningDesktopSays)
{
    QTemporaryDir directory;
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

    const auto write = [&](const QByteArray &name, const QByteArray &bytes) {
        NativeFile::remove(directories.config + name);
        EXPECT_TRUE(NativeFile::writeNew(directories.config + name, bytes));
    };
    write("/flameshot/flameshot.ini",
          "[Shortcuts]\nsavePath=/wrong\n[General]\nsavePath=/shots/\n");
    write("/spectaclerc", "[Save]\ndefaultSaveLocation=file:///old%20place/\n");
    write("/xfce4/xfce4-screenshooter", "app=none\nscreenshot_dir=~/xfce old\n");
    EXPECT_EQ(folder("KDE"), "/old place");
    EXPECT_EQ(folder("XFCE"), directories.home + "/xfce old");
    EXPECT_EQ(folder("Openbox"), "/shots");
    EXPECT_EQ(folder("GNOME"), fallback) << "whose own tool has no such setting";

    write("/spectaclerc",
          "[ImageSave]\nimageSaveLocation[$e]=file://$HOME/new/\n"
          "[Save]\ndefaultSaveLocation=file:///old/\n");
    write("/xfce4/xfconf/xfce-perchannel-xml/xfce4-screenshooter.xml",
          R"(<channel name="xfce4-screenshooter" version="1.0"><property name="actions"/>
          <property name="screenshot-dir" type="string" value="file:///new/xfce"/></channel>)");
    EXPECT_EQ(folder("KDE"), directories.home + "/new");
    EXPECT_EQ(folder("XFCE"), "/new/xfce");
    write("/xfce4/xfconf/xfce-perchannel-xml/xfce4-screenshooter.xml", "<channel><broken");
    EXPECT_EQ(folder("XFCE"), directories.home + "/xfce old");
}
