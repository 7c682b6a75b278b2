#pragma once

#include "base/Observable.h"
#include "platform/linux/LookSources.h"
#include "platform/linux/WindowScale.h"
#include "platform/linux/x11/XSettingsWatch.h"

#include <QObject>

class MainQueue;
class QDBusMessage;
class QDBusPendingCallWatcher;

/// The desktop's look from the Settings portal and the settings manager, followed
/// at run time. Nothing is asked before the event loop runs, and nobody waits for an
/// answer: until then the look is that of the toolkit. Main thread.
class LinuxLook final : public QObject
{
    Q_OBJECT

public:
    LinuxLook(MainQueue &queue, WatchConnection &connection);

    Observable<DesktopLook> look;

private:
    Q_SLOT void settingChanged(const QDBusMessage &signal);
    void start();
    void watchPortal();
    void askPortal();
    void takePortal(const QDBusMessage &reply);
    void update();

    LookSources m_sources;
    XSettingsWatch m_xsettings;
    WindowScale m_scale;
    QDBusPendingCallWatcher *m_question = nullptr; // The latest.
    DesktopLook::Colours m_colours = DesktopLook::Colours::Toolkit;
};
