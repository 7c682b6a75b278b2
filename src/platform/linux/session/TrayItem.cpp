#include "platform/linux/session/TrayItem.h"

#include <QAction>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QMenu>

#include <array>
#include <limits>
#include <utility>

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// The answer to a question that nobody waits for may take its time. A watcher
/// that hangs must not be taken for none: the toolkit would ask it again, and
/// wait. One that dies answers through the bus.
constexpr int noLimit = std::numeric_limits<int>::max(); // Milliseconds.

/// Many panels are both kinds of tray and start with the poorer one.
constexpr double notifierGrace = 1; // Seconds.

constexpr std::array imageSizes { 16, 22, 24, 32, 48, 64 };

/// The sizes that trays ask for, each drawn sharp.
QIcon atTraySizes(const QIcon &image)
{
    QIcon result;
    for (const int size : imageSizes)
        result.addPixmap(image.pixmap(QSize(size, size), 1.0));
    return result;
}

}

QString trayLabel(const QString &title, TrayKind kind)
{
    QString label = title;
    // The toolkit's menus take what follows a tab for a shortcut.
    label.replace(u'\t', u' ').replace(u'\n', u' ');
    if (kind == TrayKind::Embedded)
        return label.replace(u'&', QStringLiteral("&&"));
    // Over the bus an underscore marks the mnemonic and two are one. The toolkit
    // turns the first ampersand into such a mark and leaves the others alone, so
    // it is given one of its own to turn, before the first character.
    label.replace(u'_', QStringLiteral("__"));
    return label.contains(u'&') ? u'&' + label : label;
}

TrayItem::TrayItem(MainQueue &queue, EmbeddingTray &tray)
    : m_queue(queue)
    , m_tray(tray)
{
    m_tray.onChange = [this] { update(); };
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        auto *watcher = new QDBusServiceWatcher(watcherName, bus,
                                                QDBusServiceWatcher::WatchForOwnerChange, this);
        connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
                &TrayItem::askNotifierWatcher);
        // From any sender: naming the service would make the bus library look up its owner first.
        for (const char *signal :
             { "StatusNotifierHostRegistered", "StatusNotifierHostUnregistered" })
            bus.connect(QString(), watcherPath, watcherName, QLatin1String(signal), this,
                        SLOT(askNotifierWatcher()));
        askNotifierWatcher();
    } else {
        m_settled = true;
        update();
    }
}

TrayItem::~TrayItem()
{
    m_tray.onChange = nullptr;
}

/// A watcher without a host would accept an item that nobody shows.
void TrayItem::askNotifierWatcher()
{
    auto message = QDBusMessage::createMethodCall(watcherName, watcherPath,
                                                  QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("Get"));
    message.setAutoStartService(false);
    message << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
    m_question = std::make_unique<QDBusPendingCallWatcher>(
        QDBusConnection::sessionBus().asyncCall(message, noLimit));
    connect(m_question.get(), &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher *call) {
                const QDBusPendingReply<QDBusVariant> reply = *call;
                m_notifierHost = !reply.isError() && reply.value().variant().toBool();
                m_settled = true;
                update();
            });
}

void TrayItem::setImage(const QIcon &image, const QString &description)
{
    m_image = image;
    m_description = description;
    if (m_icon) {
        m_icon->setIcon(this->image());
        m_icon->setToolTip(m_description);
    }
}

void TrayItem::setMenu(const QList<MenuEntry> &entries)
{
    m_entries = entries;
    if (m_icon)
        buildMenu();
}

bool TrayItem::isShown() const
{
    return m_icon && (m_notifierHost || m_tray.isThere());
}

void TrayItem::update()
{
    if (m_icon || !m_settled)
        return;
    const bool wait = !std::exchange(m_startingUp, false);
    if (m_notifierHost) {
        appear(TrayKind::Notifier);
    } else if (!m_tray.isThere()) {
        m_grace.reset();
    } else if (!wait) {
        appear(TrayKind::Embedded);
    } else if (!m_grace) {
        m_grace = m_queue.after(notifierGrace, [this] { appear(TrayKind::Embedded); });
    }
}

/// The toolkit now asks the notifier watcher by itself and waits for it: which has
/// just answered us, or there is none.
void TrayItem::appear(TrayKind kind)
{
    m_grace.reset();
    m_kind = kind;
    m_icon = std::make_unique<QSystemTrayIcon>();
    QObject::connect(m_icon.get(), &QSystemTrayIcon::activated, m_icon.get(),
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger && onActivate)
                             onActivate();
                     });
    m_icon->setIcon(image());
    m_icon->setToolTip(m_description);
    m_menu = std::make_unique<QMenu>();
    QObject::connect(m_menu.get(), &QMenu::aboutToShow, m_menu.get(), [this] {
        if (onMenuOpened)
            onMenuOpened();
    });
    QObject::connect(m_menu.get(), &QMenu::aboutToHide, m_menu.get(), [this] {
        if (onMenuClosed)
            onMenuClosed();
    });
    buildMenu();
    m_icon->setContextMenu(m_menu.get());
    m_icon->show();
}

/// A notifier item is sent as pictures, of the sizes that there are; an embedded
/// one draws itself in the size that it gets.
QIcon TrayItem::image() const
{
    return m_kind == TrayKind::Notifier ? atTraySizes(m_image) : m_image;
}

/// In the same menu: a host is told when its entries change, but not when another
/// menu takes its place.
void TrayItem::buildMenu()
{
    for (QAction *old : m_menu->actions()) {
        m_menu->removeAction(old);
        old->deleteLater(); // It may be the one that is being chosen.
    }
    for (const MenuEntry &entry : m_entries) {
        if (entry.title.isEmpty()) {
            m_menu->addSeparator();
            continue;
        }
        QAction *added
            = m_menu->addAction(trayLabel(entry.title, m_kind), m_menu.get(), entry.action);
        if (!entry.key.isEmpty())
            added->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + entry.key));
    }
}
