#include "platform/linux/session/TrayHosts.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <limits>

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// The answer to a question that nobody waits for may take its time. A watcher
/// that hangs must not be taken for none: the toolkit would ask it again, and
/// wait. One that dies answers through the bus.
constexpr int noLimit = std::numeric_limits<int>::max();

}

TrayHosts::TrayHosts(EmbeddingTray &tray)
    : m_tray(tray)
{
    m_tray.onChange = [this] { changed(); };
    watchBus();
}

TrayHosts::~TrayHosts()
{
    m_tray.onChange = nullptr;
}

void TrayHosts::watchBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        m_settled = true;
        return;
    }
    auto *watcher
        = new QDBusServiceWatcher(watcherName, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            &TrayHosts::askNotifierWatcher);
    // From any sender: naming the service would make the bus library look up its owner first.
    for (const char *signal : { "StatusNotifierHostRegistered", "StatusNotifierHostUnregistered" })
        bus.connect(QString(), watcherPath, watcherName, QLatin1String(signal), this,
                    SLOT(askNotifierWatcher()));
    askNotifierWatcher();
}

/// A watcher without a host would accept an item that nobody shows.
void TrayHosts::askNotifierWatcher()
{
    auto message = QDBusMessage::createMethodCall(watcherName, watcherPath,
                                                  QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("Get"));
    message.setAutoStartService(false);
    message << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
    m_question = new QDBusPendingCallWatcher(
        QDBusConnection::sessionBus().asyncCall(message, noLimit), this);
    connect(m_question, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher *call) {
                takeAnswer(*call);
                call->deleteLater();
            });
}

void TrayHosts::takeAnswer(const QDBusPendingCallWatcher &call)
{
    if (&call != m_question)
        return;
    m_question = nullptr;
    const QDBusPendingReply<QDBusVariant> reply = call;
    m_notifierHost = !reply.isError() && reply.value().variant().toBool();
    m_settled = true;
    changed();
}

void TrayHosts::changed()
{
    if (onChange)
        onChange();
}
