#include "platform/linux/LinuxDesktop.h"

#include "base/QtMainQueue.h"
#include "base/ThreadWorkers.h"
#include "platform/linux/files/FileLanes.h"
#include "platform/linux/files/InotifyFolders.h"
#include "platform/linux/files/LinuxBookmarks.h"
#include "platform/linux/files/LocalFiles.h"
#include "platform/linux/pictures/DecoderPool.h"
#include "platform/linux/pictures/DesktopThumbnails.h"
#include "platform/linux/pictures/HelperProcess.h"
#include "platform/linux/pictures/PlayerProcess.h"
#include "platform/linux/session/CanberraSounds.h"
#include "platform/linux/session/JsonPreferences.h"
#include "platform/linux/session/LateApplications.h"
#include "platform/linux/session/LinuxLook.h"
#include "platform/linux/session/PortalFolder.h"
#include "platform/linux/session/ScreenshotFolder.h"
#include "platform/linux/session/ThemeIcons.h"
#include "platform/linux/session/TrayItem.h"
#include "platform/linux/session/XdgAutostart.h"
#include "platform/linux/x11/X11Desktop.h"
#include "platform/linux/x11/X11Keyboard.h"
#include "platform/linux/x11/XSettings.h"
#include "platform/linux/x11/Xcb.h"

#include <QDBusConnection>
#include <QFile>
#include <QWidget>

#include <array>
#include <cstdlib>

namespace {

/// Work that hangs in a disk at the end may go on at any moment, and posts to the queue:
/// all that it uses stays, since the process ends where this stands.
struct LastWork
{
    ~LastWork()
    {
        bool ended = workers.end();
        for (FileLanes *each : lanes)
            ended = each->end() && ended;
        if (!ended)
            std::_Exit(EXIT_SUCCESS);
    }

    ThreadWorkers &workers;
    std::array<FileLanes *, 3> lanes;
};

}

/// Under Wayland the panel can neither see drags begin nor choose its place, so the program
/// goes through XWayland there, whatever the desktop has its other programs choose.
bool LinuxDesktop::chooseWindowSystem()
{
    return X11Desktop::hasServer() && qputenv("QT_QPA_PLATFORM", "xcb");
}

struct LinuxDesktop::Parts
{
    Parts(const Directories &paths, const QString &resourceFolder, const QByteArray &textFolder)
        : directories(paths)
        , resources(resourceFolder)
        , windowSystem(queue, workers, textFolder)
    {
        workers.lanes = [this](const QByteArray &path, std::function<void()> work) {
            lanes.run(path, std::move(work));
        };
    }

    Directories directories;
    QString resources;
    QtMainQueue queue;
    // Work may run to the last moment: what it uses stands before the workers.
    LinuxBookmarks bookmarks { LinuxBookmarks::placesOf(directories) };
    LateApplications applications {
        HelperProcess::installedProgram(QStringLiteral("vantle-gio.so")), Xcb::serverTime
    };
    InotifyFolders folderEvents { queue };
    ThreadWorkers workers;
    FileLanes lanes;
    JsonPreferences preferences { directories.config };
    CanberraSounds sounds { QFile::encodeName(resources + QStringLiteral("/sounds")),
                            XSettings::read };
    XdgAutostart autostart { directories.config, XdgAutostart::runningExecutable() };
    ThemeIcons icons { resources + QStringLiteral("/icons"), XSettings::read };
    FileLanes playerLanes;
    FileLanes pictureLanes; // A list of pictures holds up no other look at files.
    LastWork lastWork { workers, { &lanes, &pictureLanes, &playerLanes } };
    DecoderPool pictures { HelperProcess::installedProgram(QStringLiteral("vantle-decoder")),
                           pictureLanes, queue };
    DesktopThumbnails thumbnails { DesktopThumbnails::placesOf(directories), pictures, pictureLanes,
                                   queue };
    X11Desktop windowSystem;
    LinuxLook look { windowSystem.settings };
    TrayItem statusItem { queue, windowSystem.tray };
};

LinuxDesktop::LinuxDesktop(const Directories &directories, const QString &resources,
                           const QByteArray &textFolder)
    : m_parts(std::make_unique<Parts>(directories, resources, textFolder))
{
    // First of all: whoever paints icons anew after that finds the theme that goes with the look.
    m_scheme = m_parts->look.look.subscribe(
        [&icons = m_parts->icons](const DesktopLook &look) { icons.setScheme(look.scheme); },
        Deliver::ChangesOnly);
}

LinuxDesktop::~LinuxDesktop() = default;

Desktop LinuxDesktop::interfaces()
{
    Parts &parts = *m_parts;
    X11Desktop &windows = parts.windowSystem;
    const auto desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
    return { .queue = parts.queue,
             .workers = parts.workers,
             .bookmarks = parts.bookmarks,
             .sounds = parts.sounds,
             .preferences = parts.preferences,
             .autostart = parts.autostart,
             .screens = windows.screens,
             .pointer = windows.pointer,
             .dragSelection = windows.dragSelection,
             .frontApplication = windows.front,
             .hotKey = windows.hotKey,
             .icons = parts.icons,
             .panelWindow = windows.panelWindow,
             .tabWindow = windows.tabWindow,
             .dropTarget = windows.dropTarget,
             .dragSession = windows.dragSession,
             .statusItem = parts.statusItem,
             .directories = parts.directories,
             .resources = parts.resources,
             .clipboard = windows.clipboard,
             .applications = parts.applications,
             .folderEvents = parts.folderEvents,
             .look = parts.look.look,
             .pictures = parts.pictures,
             .thumbnails = parts.thumbnails,
             .bringToFront
             = [&parts](QWidget &window) { X11Activation::bringToFront(window, parts.queue); },
             .keyEvent = X11Keyboard::keyEvent,
             .screenshotFolder = [directories = parts.directories,
                                  desktops] { return screenshotFolder(directories, desktops); },
             .isRemote = LocalFiles::isRemote,
             .localFiles = [](const QList<Address> &urls) { return LocalFiles::examined(urls); },
             .play =
                 [&parts](const QUrl &url) {
                     return std::make_unique<PlayerProcess>(
                         HelperProcess::installedProgram(QStringLiteral("vantle-player")), url,
                         parts.playerLanes, parts.queue);
                 },
             .chooseFolder =
                 [](QWidget &window, const QString &title, std::function<void(const QUrl &)> chosen,
                    std::function<void()> unavailable) {
                     PortalFolder::ask(QDBusConnection::sessionBus(), window,
                                       QStringLiteral("x11:") + QString::number(window.winId(), 16),
                                       title, std::move(chosen), std::move(unavailable));
                 } };
}
