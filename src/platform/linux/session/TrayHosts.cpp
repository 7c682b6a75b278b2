#include "platform/linux/session/TrayHosts.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <xcb/xfixes.h>

#include <cstdlib>
#include <limits>

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// The answer to a question that nobody waits for may take its time. A watcher
/// that hangs must not be taken for none: the toolkit would ask it again, and
/// wait. One that dies answers through the bus.
constexpr int noLimit = std::numeric_limits<int>::max();

}

TrayHosts::TrayHosts()
{
    watchServer();
    watchBus();
}

TrayHosts::~TrayHosts()
{
    QCoreApplication::instance()->removeNativeEventFilter(this);
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

void TrayHosts::watchServer()
{
    xcb_connection_t *connection = Xcb::toolkitConnection();
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    if (connection == nullptr || xcb_parse_display(nullptr, &host, &display, &screen) == 0)
        return;
    std::free(host);
    const auto *fixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
    m_selection = Xcb::Atoms(connection)("_NET_SYSTEM_TRAY_S" + QByteArray::number(screen));
    if (m_selection == Xcb::none)
        return;
    if (fixes != nullptr && fixes->present != 0) {
        m_selectionNotify = static_cast<uint8_t>(fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
        xcb_discard_reply(connection, xcb_xfixes_query_version(connection, 5, 0).sequence);
        xcb_xfixes_select_selection_input(
            connection, X11Root::ofScreen(connection, screen), m_selection,
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    // Asked after watching has begun, so that nothing is missed between.
    m_trayManager = Xcb::selectionOwner(connection, m_selection) != Xcb::none;
}

bool TrayHosts::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != m_selectionNotify)
        return false;
    const auto *notify = static_cast<const xcb_xfixes_selection_notify_event_t *>(message);
    if (notify->selection == m_selection) {
        m_trayManager = notify->owner != Xcb::none;
        changed();
    }
    return false;
}

void TrayHosts::changed()
{
    if (onChange)
        onChange();
}
