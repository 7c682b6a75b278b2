#include "platform/linux/TrayItem.h"

#include "platform/linux/x11/WatchConnection.h"
#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QMenu>
#include <QSystemTrayIcon>

#include <xcb/xfixes.h>

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

}

TrayItem::TrayItem(WatchConnection &connection)
    : m_connection(connection)
    , m_menu(std::make_unique<QMenu>())
{
    watchNotifierHost();
    watchXEmbedTray();
    askNotifierHost();
}

TrayItem::~TrayItem() = default;

void TrayItem::watchNotifierHost()
{
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    m_watcher = std::make_unique<QDBusServiceWatcher>(watcherName, bus,
                                                      QDBusServiceWatcher::WatchForRegistration);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceRegistered, this,
            [this] { askNotifierHost(); });
    bus.connect(watcherName, watcherPath, watcherName,
                QStringLiteral("StatusNotifierHostRegistered"), this,
                SLOT(notifierHostRegistered()));
}

void TrayItem::watchXEmbedTray()
{
    if (!m_connection.isUsable())
        return;
    xcb_connection_t *xcb = m_connection.xcb();
    const xcb_window_t root = m_connection.root();
    m_traySelection = Xcb::Atoms(xcb)(
        "_NET_SYSTEM_TRAY_S" + QByteArray::number(X11Root::screenNumber(xcb, root)));
    xcb_xfixes_select_selection_input(xcb, root, m_traySelection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    xcb_flush(xcb);
    m_connection.addEventHandler([this](const xcb_generic_event_t &event) {
        if ((event.response_type & 0x7f)
            != m_connection.fixesFirstEvent() + XCB_XFIXES_SELECTION_NOTIFY)
            return;
        const auto &notice = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
        if (notice.selection == m_traySelection && notice.owner != XCB_NONE && m_hostAsked)
            make(Kind::XEmbed);
    });
}

/// A watcher without a host shows nothing to anybody: only a host counts.
void TrayItem::askNotifierHost()
{
    const auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        m_hostAsked = true;
        askXEmbedTray();
        return;
    }
    auto question = QDBusMessage::createMethodCall(
        watcherName, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    question << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto *call = new QDBusPendingCallWatcher(bus.asyncCall(question, 2000), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        call->deleteLater();
        m_hostAsked = true;
        if (reply.isValid() && reply.value().variant().toBool())
            make(Kind::StatusNotifier);
        else
            askXEmbedTray();
    });
}

void TrayItem::askXEmbedTray()
{
    if (!m_connection.isUsable())
        return;
    xcb_connection_t *xcb = m_connection.xcb();
    m_connection.whenAnswered<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(xcb, m_traySelection), [this](const auto *reply) {
            if (reply && reply->owner != XCB_NONE)
                make(Kind::XEmbed);
        });
    xcb_flush(xcb);
}

void TrayItem::make(Kind kind)
{
    if (m_icon)
        return;
    m_kind = kind;
    m_icon = std::make_unique<QSystemTrayIcon>(m_image);
    m_icon->setToolTip(m_description);
    fillMenu();
    m_icon->setContextMenu(m_menu.get());
    connect(m_icon.get(), &QSystemTrayIcon::activated, this, [this](auto reason) {
        if (reason == QSystemTrayIcon::Trigger && onActivate)
            onActivate();
    });
    m_icon->show();
}

void TrayItem::setImage(const QIcon &image, const QString &description)
{
    m_image = image;
    m_description = description;
    if (!m_icon)
        return;
    m_icon->setIcon(image);
    m_icon->setToolTip(description);
}

void TrayItem::setMenu(const QList<MenuEntry> &entries)
{
    m_entries = entries;
    if (m_icon)
        fillMenu();
}

void TrayItem::fillMenu()
{
    m_menu->clear();
    for (const MenuEntry &entry : m_entries) {
        if (entry.title.isEmpty()) {
            m_menu->addSeparator();
            continue;
        }
        // "&" marks a mnemonic for the toolkit; on its way over D-Bus "_" does, and the
        // toolkit turns the one into the other without escaping the other.
        QString title = entry.title;
        title.replace(QLatin1Char('&'), QLatin1String("&&"));
        if (m_kind == Kind::StatusNotifier)
            title.replace(QLatin1Char('_'), QLatin1String("__"));
        m_menu->addAction(title, this, [action = entry.action] { action(); });
    }
}
