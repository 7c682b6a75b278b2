#pragma once

#include "base/MainQueue.h"
#include "platform/StatusItem.h"
#include "platform/linux/session/WindowSystem.h"

#include <QDBusPendingCallWatcher>
#include <QIcon>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

class QMenu;

/// Where a tray's menu is drawn: by the program that shows the tray, over the
/// bus, or by ours.
enum class TrayKind { Notifier, Embedded };

/// A title such that the tray's menu shows it as it is.
QString trayLabel(const QString &title, TrayKind kind);

/// The item in a tray of either kind, as soon as the session has one. The toolkit
/// decides on the kind when it is first asked about trays and stays with it until
/// the process ends; so it is not asked before there is a tray: a host of StatusNotifier
/// items on the session bus, or a manager of embedded windows of the window system. Either
/// may come later. Nothing here waits for another program.
class TrayItem final : public QObject, public StatusItem
{
    Q_OBJECT

public:
    TrayItem(MainQueue &queue, EmbeddingTray &tray);
    ~TrayItem() override;

    void setImage(const QIcon &image, const QString &description) override;
    void setMenu(const QList<MenuEntry> &entries) override;
    bool isShown() const override;

private:
    Q_SLOT void askNotifierWatcher();
    void update();
    void appear(TrayKind kind);
    void buildMenu();
    QIcon image() const;

    MainQueue &m_queue;
    EmbeddingTray &m_tray;
    bool m_settled = false; // Whether it is known if there is a notifier host.
    bool m_notifierHost = false;
    std::unique_ptr<QDBusPendingCallWatcher> m_question; // The latest; others are dropped.
    QIcon m_image;
    QString m_description;
    QList<MenuEntry> m_entries;
    TrayKind m_kind = TrayKind::Notifier;
    std::unique_ptr<QMenu> m_menu;
    std::unique_ptr<QSystemTrayIcon> m_icon; // Before the menu that it shows, at the end.
    bool m_startingUp = true;
    Ticket m_grace;
};
