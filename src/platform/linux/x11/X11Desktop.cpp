#include "platform/linux/x11/X11Desktop.h"

#include "platform/linux/session/ApplicationResolver.h"

#include <QStandardPaths>

bool X11Desktop::hasServer()
{
    return WatchConnection::hasServer();
}

X11Desktop::X11Desktop(MainQueue &queue, Workers &workers, const QByteArray &textFolder)
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
    , settings(watch)
{
    dropTarget.attach(panelWindow.winId());
    // A release counts once the drop that it may be has landed.
    pointer.setReleaseGate([this] { return dropTarget.isLanding(); });
    dropTarget.onLandingEnded = [this] { pointer.releaseGateOpened(); };
}
