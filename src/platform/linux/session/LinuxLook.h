#pragma once

#include "base/Observable.h"
#include "platform/DesktopLook.h"
#include "platform/linux/session/WindowSystem.h"

#include <QDBusPendingCallWatcher>
#include <QHash>
#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

class QDBusMessage;

/// What the several places say in which a Linux desktop keeps its look.
struct LookSources
{
    /// Of the Settings portal, by namespace and key with a space between.
    QHash<QString, QVariant> portal;
    ManagedSettings xsettings;

    /// The portal's word, where it has one, before the settings manager's. What
    /// makes a screen easier to use counts whoever asks for it.
    DesktopLook look() const;
};

/// The desktop's look from the Settings portal and the settings manager, followed
/// at run time. Nothing is asked before the event loop runs, and nobody waits for an
/// answer: until then the look is that of the toolkit. Main thread.
class LinuxLook final : public QObject
{
    Q_OBJECT

public:
    /// The manager outlives it.
    explicit LinuxLook(SettingsManager &manager);

    Observable<DesktopLook> look;

private:
    Q_SLOT void settingChanged(const QDBusMessage &signal);
    void start();
    void askPortal();
    void takePortal(const QDBusMessage &reply);
    void update();

    LookSources m_sources;
    SettingsManager &m_manager;
    std::unique_ptr<QDBusPendingCallWatcher> m_question; // The latest; others are dropped.
    DesktopLook::Colours m_colours = DesktopLook::Colours::Toolkit;
};
