#pragma once

#include "platform/linux/session/WindowSystem.h"

#include <QObject>

#include <functional>

class QDBusPendingCallWatcher;

/// Watches for the two kinds of trays that a session may have, at the start or
/// later: a host of StatusNotifier items on the session bus, and a manager of
/// embedded windows of the window system. Nothing here waits for another program.
class TrayHosts final : public QObject
{
    Q_OBJECT
public:
    explicit TrayHosts(EmbeddingTray &tray);
    ~TrayHosts() override;

    /// Whether the session bus has answered: until then it is not known whether
    /// there is a notifier host.
    bool isSettled() const { return m_settled; }
    bool hasNotifierHost() const { return m_notifierHost; }
    bool hasTrayManager() const { return m_tray.isThere(); }

    /// One of the above may have changed.
    std::function<void()> onChange;

private Q_SLOTS:
    void askNotifierWatcher();

private: // NOLINT(readability-redundant-access-specifiers): those above are slots.
    void watchBus();
    void takeAnswer(const QDBusPendingCallWatcher &call);
    void changed();

    EmbeddingTray &m_tray;
    bool m_settled = false;
    bool m_notifierHost = false;
    QDBusPendingCallWatcher *m_question
        = nullptr; // The latest one; earlier answers are out of date.
};
