#pragma once

#include "platform/StatusItem.h"

#include <QMenu>
#include <QSet>

#include <functional>

class Localizer;
class ShelfStore;
class Symbols;
struct ShelfInfo;

/// The menu of shelves as the store has them at this moment: the open ones, what
/// can be done with the current one, and those that were closed.
class ShelfMenu final : public QMenu
{
public:
    ShelfMenu(ShelfStore &store, const Localizer &texts, Symbols &symbols, QWidget *parent);

    /// The current shelf wants another name.
    std::function<void()> onRename;

    /// Entries for the program as a whole, below all others.
    void addMore(const QList<MenuEntry> &entries);
    /// Opens below the widget, in line with its leading edge.
    void popupBelow(const QWidget &widget);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void addShelf(const ShelfInfo &info);
    void addCommands();
    void addClosed();
    QRect scrolledArea() const;
    QString label(const QString &title) const;

    ShelfStore &m_store;
    const Localizer &m_texts;
    Symbols &m_symbols;
    QSet<const QAction *> m_pinned;
};
