#include "app/AppDelegate.h"
#include "base/QtMainQueue.h"
#include "base/ThreadWorkers.h"
#include "platform/linux/ApplicationResolver.h"
#include "platform/linux/CanberraSounds.h"
#include "platform/linux/JsonPreferences.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/SystemLanguages.h"
#include "platform/linux/ThemeIcons.h"
#include "platform/linux/TrayItem.h"
#include "platform/linux/XdgAutostart.h"
#include "platform/linux/XdgDirectories.h"
#include "platform/linux/x11/WatchConnection.h"
#include "platform/linux/x11/X11DragSelection.h"
#include "platform/linux/x11/X11DragSession.h"
#include "platform/linux/x11/X11FrontApplication.h"
#include "platform/linux/x11/X11PanelWindow.h"
#include "platform/linux/x11/X11PointerMonitor.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/Xcb.h"
#include "platform/linux/x11/XdndTarget.h"
#include "store/LegacyMigration.h"

#include <QApplication>
#include <QFile>
#include <QImageReader>
#include <QStandardPaths>

#include <cstdio>

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
    X11Desktop(MainQueue &queue, Workers &workers)
        : pointer(watch, queue)
        , dragSelection(watch, queue)
        , resolver(QStringLiteral("/proc"),
                   QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation))
        , front(watch, resolver)
        , panelWindow(queue)
        , dropTarget(queue)
        , dragSession(panelWindow, queue, workers)
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
    ApplicationResolver resolver;
    X11FrontApplication front;
    X11Screens screens;
    X11PanelWindow panelWindow;
    XdndTarget dropTarget;
    X11DragSession dragSession;
    TrayItem statusItem;
};

int run(QApplication &application, const Directories &directories, SingleInstance &instance)
{
    const QStringList places = resourcePlaces();
    const auto bundle = Localizer::findBundle(places);
    if (!bundle)
        qFatal("unable to find bundle named Vantle_Vantle");
    const QString resources = *bundle + QStringLiteral("/..");

    QtMainQueue queue;
    ThreadWorkers workers;
    JsonPreferences preferences(directories.config);
    LegacyMigration::runIfNeeded(preferences, JsonPreferences::predecessor(directories.config),
                                 AppPaths(directories));
    Localizer texts(*bundle, SystemLanguages::fromEnvironment());
    CanberraSounds sounds(QFile::encodeName(resources + QStringLiteral("/sounds")));
    XdgAutostart autostart(directories.config, XdgAutostart::runningExecutable());
    ThemeIcons icons(resources + QStringLiteral("/icons"));
    X11Desktop x11(queue, workers);

    AppDelegate delegate({ queue, workers, sounds, preferences, autostart, x11.screens, x11.pointer,
                           x11.dragSelection, x11.front, icons, x11.panelWindow, x11.dropTarget,
                           x11.dragSession, x11.statusItem, directories, resources },
                         texts);
    delegate.onQuit = [] { QCoreApplication::quit(); };
    delegate.applicationDidFinishLaunching();
    instance.deliverTo([&delegate] { delegate.activate(); });
    return application.exec();
}

}

int main(int argc, char **argv)
{
    // Under Wayland the panel can neither see drags begin nor choose its place, so the program
    // goes through XWayland there.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Vantle"));
    QApplication::setApplicationVersion(QStringLiteral(VANTLE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("app.vantleapp.Vantle"));
    QApplication::setQuitOnLastWindowClosed(false);
    // The toolkit's 128 refuse what cameras make today.
    QImageReader::setAllocationLimit(512); // Megabytes.
    if (!Xcb::toolkitConnection()) {
        std::fputs("Vantle needs an X server: it does not run on this platform.\n", stderr);
        return 1;
    }
    const Directories directories = XdgDirectories::fromEnvironment();
    SingleInstance instance(directories.state);
    switch (instance.acquire()) {
    case SingleInstance::Result::First:
        return run(application, directories, instance);
    case SingleInstance::Result::HandedOver:
        return 0;
    case SingleInstance::Result::HeldElsewhere:
        return 1;
    }
    return 1;
}
