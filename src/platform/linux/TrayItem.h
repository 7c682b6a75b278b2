#pragma once

#include "platform/StatusItem.h"

#include <QObject>

#include <memory>

class QDBusServiceWatcher;
class QMenu;
class QSystemTrayIcon;
class WatchConnection;

/// A StatusNotifierItem where the desktop has a host for it, else an icon in an
/// XEmbed tray. The toolkit settles for one kind when its tray icon is made, and
/// for good: so it is made once there is a tray of either kind, however late.
class TrayItem final : public QObject, public StatusItem
{
    Q_OBJECT

public:
    /// `connection` tells when an XEmbed tray comes.
    explicit TrayItem(WatchConnection &connection);
    ~TrayItem() override;

    void setImage(const QIcon &image, const QString &description) override;
    void setMenu(const QList<MenuEntry> &entries) override;

private:
    enum class Kind { None, StatusNotifier, XEmbed };

    void watchNotifierHost();
    void watchXEmbedTray();
    void askNotifierHost();
    void askXEmbedTray();
    void make(Kind kind);
    void fillMenu();

    Q_SLOT void notifierHostRegistered() { askNotifierHost(); }

    WatchConnection &m_connection;
    Kind m_kind = Kind::None;
    bool m_hostAsked = false; // It is known whether there is a StatusNotifier host.
    uint32_t m_traySelection = 0; // The atom _NET_SYSTEM_TRAY_Sn.
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    QIcon m_image;
    QString m_description;
    QList<MenuEntry> m_entries;
    std::unique_ptr<QMenu> m_menu; // Before the icon, which shows it.
    std::unique_ptr<QSystemTrayIcon> m_icon;
};
