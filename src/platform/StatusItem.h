#pragma once

#include <QIcon>
#include <QList>
#include <QString>

#include <functional>

/// One entry of the status menu; without a title it is a separator.
struct MenuEntry
{
    QString title; // As the user reads it; the back end escapes what its menus treat specially.
    std::function<void()> action;
    QString key; // Shown with Ctrl beside the title, if there is one.
};

/// The program's item in the desktop's tray, of whichever kind and whenever
/// there is one. Main thread.
class StatusItem
{
public:
    virtual ~StatusItem() = default;
    virtual void setImage(const QIcon &image, const QString &description) = 0;
    virtual void setMenu(const QList<MenuEntry> &entries) = 0;
    /// Whether the session has a tray that shows it.
    virtual bool isShown() const = 0;
    /// The item itself was pressed, where the tray tells that apart from its menu.
    std::function<void()> onActivate;
    /// Not every tray tells that its menu was closed.
    std::function<void()> onMenuOpened;
    std::function<void()> onMenuClosed;
};
