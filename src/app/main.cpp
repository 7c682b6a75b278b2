#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "base/QtMainQueue.h"
#include "base/ThreadWorkers.h"
#include "platform/linux/files/FileLanes.h"
#include "platform/linux/files/InotifyFolders.h"
#include "platform/linux/files/LinuxBookmarks.h"
#include "platform/linux/pictures/DecoderPool.h"
#include "platform/linux/pictures/DesktopThumbnails.h"
#include "platform/linux/session/ApplicationResolver.h"
#include "platform/linux/session/ApplicationService.h"
#include "platform/linux/session/CanberraSounds.h"
#include "platform/linux/session/JsonPreferences.h"
#include "platform/linux/session/LateApplications.h"
#include "platform/linux/session/LinuxLook.h"
#include "platform/linux/session/SingleInstance.h"
#include "platform/linux/session/SystemLanguages.h"
#include "platform/linux/session/ThemeIcons.h"
#include "platform/linux/session/TrayItem.h"
#include "platform/linux/session/XdgAutostart.h"
#include "platform/linux/session/XdgDirectories.h"
#include "platform/linux/x11/WatchConnection.h"
#include "platform/linux/x11/X11Clipboard.h"
#include "platform/linux/x11/X11DragSelection.h"
#include "platform/linux/x11/X11DragSession.h"
#include "platform/linux/x11/X11FrontApplication.h"
#include "platform/linux/x11/X11HotKey.h"
#include "platform/linux/x11/X11PanelWindow.h"
#include "platform/linux/x11/X11PointerMonitor.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11TabWindow.h"
#include "platform/linux/x11/X11Time.h"
#include "platform/linux/x11/X11Windows.h"
#include "platform/linux/x11/Xcb.h"
#include "platform/linux/x11/XdndTarget.h"
#include "store/LegacyMigration.h"
#include "views/look/PlainText.h"
#include "views/look/ProgramIcon.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QSessionManager>
#include <QShortcut>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

/// Where icons, sounds and texts may lie: beside the bin folder that holds the
/// program, in the installation's own place, or next to the program.
QStringList resourcePlaces()
{
    const QString program = QCoreApplication::applicationDirPath();
    return { program + QStringLiteral("/../share/vantle"), QStringLiteral(VANTLE_DATA_DIR),
             program };
}

/// The X11 back ends, with what joins them to each other.
struct X11Desktop
{
    /// textFolder: where texts that users put on a shelf are kept.
    X11Desktop(MainQueue &queue, Workers &workers, const QByteArray &textFolder)
        : pointer(watch, queue)
        , dragSelection(watch)
        , front(watch,
                std::make_shared<ApplicationResolver>(
                    QStringLiteral("/proc"),
                    QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)),
                queue, workers)
        , hotKey(watch)
        , panelWindow(queue)
        , tabWindow(queue)
        , dropTarget(queue)
        , dragSession(panelWindow, queue, workers, textFolder)
        , clipboard(queue, workers, textFolder)
        , windows(queue)
        , look(queue, watch)
        , statusItem(queue)
    {
        dropTarget.attach(panelWindow.winId());
        // A release counts once the drop that it may be has landed.
        pointer.setReleaseGate([this] { return dropTarget.isLanding(); });
        dropTarget.onLandingEnded = [this] { pointer.releaseGateOpened(); };
    }

    WatchConnection watch;
    X11PointerMonitor pointer;
    X11DragSelection dragSelection;
    X11FrontApplication front;
    X11HotKey hotKey;
    X11Screens screens;
    X11PanelWindow panelWindow;
    X11TabWindow tabWindow;
    XdndTarget dropTarget;
    X11DragSession dragSession;
    X11Clipboard clipboard;
    X11Windows windows;
    LinuxLook look;
    TrayItem statusItem;
};

/// Work that hangs in a disk at the end may go on at any moment, and posts to the queue:
/// all that it uses stays, since the process ends where this stands.
struct LastWork
{
    ~LastWork()
    {
        const bool lanesEnded = lanes.end();
        const bool picturesEnded = pictureLanes.end();
        if (!workers.end() || !lanesEnded || !picturesEnded)
            std::_Exit(status);
    }

    ThreadWorkers &workers;
    FileLanes &lanes;
    FileLanes &pictureLanes;
    int status = 0;
};

int run(QApplication &application, const Directories &directories, SingleInstance &instance,
        const QList<QUrl> &files)
{
    const QStringList places = resourcePlaces();
    const auto bundle = Localizer::findBundle(places);
    if (!bundle)
        qFatal("unable to find bundle named Vantle_Vantle");
    const QString resources = *bundle + QStringLiteral("/..");

    QtMainQueue queue;
    // Work may run to the last moment: what it uses stands before the workers.
    LinuxBookmarks bookmarks(LinuxBookmarks::placesOf(directories));
    LateApplications applications(X11Time::now);
    InotifyFolders folderEvents(queue);
    ThreadWorkers workers;
    FileLanes lanes;
    workers.lanes = [&lanes](const QByteArray &path, std::function<void()> work) {
        lanes.run(path, std::move(work));
    };
    JsonPreferences preferences(directories.config);
    LegacyMigration::runIfNeeded(preferences, JsonPreferences::predecessor(directories.config),
                                 AppPaths(directories));
    Localizer texts(*bundle, SystemLanguages::fromEnvironment());
    CanberraSounds sounds(QFile::encodeName(resources + QStringLiteral("/sounds")));
    XdgAutostart autostart(directories.config, XdgAutostart::runningExecutable());
    ThemeIcons icons(resources + QStringLiteral("/icons"));
    FileLanes pictureLanes; // A list of pictures holds up no other look at files.
    LastWork lastWork { workers, lanes, pictureLanes };
    DecoderPool pictures(DecoderPool::installedProgram(), pictureLanes, queue);
    DesktopThumbnails thumbnails(DesktopThumbnails::placesOf(directories), pictures, pictureLanes,
                                 queue);
    X11Desktop x11(queue, workers, AppPaths(directories).dataDir + "/dropped");
    // First of all: whoever paints icons anew after that finds the theme that goes with the look.
    const Ticket iconsTicket = x11.look.look.subscribe(
        [&icons](const DesktopLook &look) { icons.setScheme(look.scheme); }, Deliver::ChangesOnly);

    AppDelegate delegate({ queue,
                           workers,
                           bookmarks,
                           sounds,
                           preferences,
                           autostart,
                           x11.screens,
                           x11.pointer,
                           x11.dragSelection,
                           x11.front,
                           x11.hotKey,
                           icons,
                           x11.panelWindow,
                           x11.tabWindow,
                           x11.dropTarget,
                           x11.dragSession,
                           x11.statusItem,
                           directories,
                           resources,
                           x11.clipboard,
                           applications,
                           folderEvents,
                           [&x11](QWidget &window) { x11.windows.bringToFront(window); },
                           x11.look.look,
                           pictures,
                           thumbnails },
                         texts);
    // quit() would ask the windows first, and the panel refuses to close.
    delegate.onQuit = [] { QCoreApplication::exit(); };
    delegate.applicationDidFinishLaunching();
    instance.deliverTo({
        .activate = [&delegate] { delegate.activate(); },
        .open = [&delegate](const QList<QUrl> &urls) { delegate.openUrls(urls); },
        .perform = [&delegate](const QString &action) { delegate.performAction(action); },
        .addToShelf = [&delegate](const QList<QUrl> &urls,
                                  const QString &text) { return delegate.addToShelf(urls, text); },
    });
    if (!files.isEmpty())
        delegate.openUrls(files);
    lastWork.status = application.exec();
    return lastWork.status;
}

/// Who starts programs from a menu sees no standard error: a window says it, until it is
/// closed or a while has passed.
int endWith(const char *key)
{
    constexpr std::chrono::seconds longEnough(15);
    const auto bundle = Localizer::findBundle(resourcePlaces());
    if (!bundle)
        return 1;
    const Localizer texts(*bundle, SystemLanguages::fromEnvironment());
    PlainLabel window(texts.text(QLatin1String(key)));
    window.setWindowTitle(texts.text(QStringLiteral("app_name")));
    window.setWindowIcon(programIcon(*bundle + QStringLiteral("/..")));
    window.setMargin(24);
    const QShortcut close(QKeySequence(Qt::Key_Escape), &window, &window, &QWidget::close);
    QApplication::setQuitOnLastWindowClosed(true);
    QTimer::singleShot(longEnough, &window, &QWidget::close);
    window.show();
    QApplication::exec();
    return 1;
}

/// A session that is restored starts what its user has chosen to start with it, and the
/// switch in the settings is that choice: the session manager must not start it as well.
void refuseSessionRestart(const QGuiApplication &application)
{
    const auto never
        = [](QSessionManager &manager) { manager.setRestartHint(QSessionManager::RestartNever); };
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &application, never);
    QObject::connect(&application, &QGuiApplication::saveStateRequest, &application, never);
}

/// The toolkit aborts where it finds none.
bool hasServer()
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    return xcb_connection_has_error(connection.get()) == 0;
}

int endWithoutServer()
{
    std::fputs("Vantle needs an X server: it does not run on this platform.\n", stderr);
    return 1;
}

}

int main(int argc, char **argv)
{
    if (const auto status
        = CommandLine::answered(QByteArrayList(argv + std::min(argc, 1), argv + argc)))
        return *status;
    // Under Wayland the panel can neither see drags begin nor choose its place, so the program
    // goes through XWayland there.
    const bool isChosen = !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
    if (!isChosen)
        qputenv("QT_QPA_PLATFORM", "xcb");
    if (qgetenv("QT_QPA_PLATFORM").startsWith("xcb") && !hasServer())
        return endWithoutServer();
    QApplication application(argc, argv);
    if (!isChosen)
        qunsetenv("QT_QPA_PLATFORM"); // What is started from here chooses for itself.
    QApplication::setApplicationName(QStringLiteral("Vantle"));
    QApplication::setApplicationVersion(QStringLiteral(VANTLE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("app.vantleapp.Vantle"));
    QApplication::setQuitOnLastWindowClosed(false);
    refuseSessionRestart(application);
    // The toolkit's 128 refuse what cameras make today.
    QImageReader::setAllocationLimit(512); // Megabytes.
    if (!Xcb::toolkitConnection())
        return endWithoutServer();
    const Directories directories = XdgDirectories::fromEnvironment();
    SingleInstance instance(directories.state);
    // The toolkit has taken its own arguments out by now.
    const auto files = CommandLine::urls(QByteArrayList(argv + std::min(argc, 1), argv + argc),
                                         QFile::encodeName(QDir::currentPath()));
    switch (instance.acquire(files)) {
    case SingleInstance::Result::First:
        return run(application, directories, instance, files);
    case SingleInstance::Result::HandedOver:
        return 0;
    case SingleInstance::Result::HeldElsewhere:
        return endWith("running_elsewhere");
    case SingleInstance::Result::NoAnswer:
        return endWith("running_silent");
    }
    return 1;
}
