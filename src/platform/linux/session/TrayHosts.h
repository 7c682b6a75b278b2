#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <cstdint>
#include <functional>

class QDBusPendingCallWatcher;

/// Watches for the two kinds of trays that a session may have, at the start or
/// later: a host of StatusNotifier items on the session bus, and a manager of
/// embedded windows on the X server. Nothing here waits for another program.
class TrayHosts final : public QObject, private QAbstractNativeEventFilter
{
    Q_OBJECT
public:
    TrayHosts();
    ~TrayHosts() override;

    /// Whether the session bus has answered: until then it is not known whether
    /// there is a notifier host.
    bool isSettled() const { return m_settled; }
    bool hasNotifierHost() const { return m_notifierHost; }
    bool hasTrayManager() const { return m_trayManager; }

    /// One of the above may have changed.
    std::function<void()> onChange;

private Q_SLOTS:
    void askNotifierWatcher();

private: // NOLINT(readability-redundant-access-specifiers): those above are slots.
    void watchBus();
    void watchServer();
    void takeAnswer(const QDBusPendingCallWatcher &call);
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void changed();

    bool m_settled = false;
    bool m_notifierHost = false;
    bool m_trayManager = false;
    QDBusPendingCallWatcher *m_question
        = nullptr; // The latest one; earlier answers are out of date.
    uint32_t m_selection = 0; // _NET_SYSTEM_TRAY_Sn
    uint8_t m_selectionNotify = 0; // The event's number.
};
