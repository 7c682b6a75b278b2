#pragma once

#include "base/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/linux/session/TrayHosts.h"

#include <QIcon>
#include <QSystemTrayIcon>

#include <memory>
#include <optional>

class QMenu;

/// Where a tray's menu is drawn: by the program that shows the tray, over the
/// bus, or by ours.
enum class TrayKind { Notifier, Embedded };

/// A title such that the tray's menu shows it as it is.
QString trayLabel(const QString &title, TrayKind kind);

/// The item in a tray of either kind, as soon as the session has one. The toolkit
/// decides on the kind when it is first asked about trays and stays with it until
/// the process ends; so it is not asked before there is a tray.
class TrayItem final : public StatusItem
{
public:
    TrayItem(MainQueue &queue, EmbeddingTray &tray);
    ~TrayItem() override;
    TrayItem(const TrayItem &) = delete;
    TrayItem &operator=(const TrayItem &) = delete;

    void setImage(const QIcon &image, const QString &description) override;
    void setMenu(const QList<MenuEntry> &entries) override;
    bool isShown() const override;

private:
    void update();
    void appear(TrayKind kind);
    void buildMenu();
    QIcon image() const;

    MainQueue &m_queue;
    TrayHosts m_hosts;
    QIcon m_image;
    QString m_description;
    QList<MenuEntry> m_entries;
    TrayKind m_kind = TrayKind::Notifier;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_icon; // Before the menu that it shows, at the end.
    bool m_startingUp = true;
    Ticket m_grace;
};
