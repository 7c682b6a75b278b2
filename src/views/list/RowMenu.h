#pragma once

#include "platform/Applications.h"
#include "store/ShelfItem.h"

#include <QList>
#include <QPoint>

#include <functional>

class Localizer;
class QMenu;
class QWidget;
class ShelfStore;

/// What can be done with entries beside what the store does. What is not set is
/// not offered.
struct RowActions
{
    /// In that application; without one, each in its default application.
    std::function<void(const QList<Address> &, const QString &application)> open;
    /// Those that open such a file, as far as they are known by now; the first
    /// question makes them known soon.
    std::function<QList<OpenWithApp>(const QUrl &)> apps;
    std::function<void()> preview;
    std::function<void(const QList<QUrl> &)> reveal;
    std::function<void(const QList<Address> &)> copyText;
};

/// The menu of one row: everything that can be done with its entry, or with the
/// selection if the entry is part of it. It decides only what is offered.
class RowMenu
{
public:
    /// The kinds of entries, in the menu's order.
    enum class Entry {
        Open,
        OpenWith,
        QuickLook,
        Reveal,
        Rename,
        Copy,
        SaveToFolder,
        Share,
        Zip,
        SaveToShelf,
        ImageResize,
        ImageConvert,
        ImageRemoveBackground,
        ImageMakePdf,
        Upload,
        CopyLink,
        OpenLink,
        CloudDelete,
        Remove,
    };

    RowMenu(ShelfStore &store, const Localizer &texts, const RowActions &actions);

    std::function<void(const ShelfItem &)> onActivate;
    std::function<void(const ShelfItem &)> onRename;
    std::function<void(const QString &)> onToast;

    /// Shows the menu at a place on the screen, above the widget's window.
    void popup(const ShelfItem &item, const QPoint &at, QWidget *over);
    /// Appends the entries for that row.
    void fill(QMenu &menu, const ShelfItem &item);

    /// Whether an entry makes sense for a row and what the command would act on.
    static bool applies(Entry entry, const ShelfItem &item, const QList<ShelfItem> &targets);

private:
    void add(Entry entry, QMenu &menu, const ShelfItem &item, const QList<ShelfItem> &targets);
    void addOpenWith(QMenu &menu, const ShelfItem &item, const QList<Address> &urls);
    void addShelves(QMenu &menu, const QList<ShelfItem> &targets);
    void addRemove(QMenu &menu, const QList<ShelfItem> &targets);
    void copy(const QList<ShelfItem> &targets) const;

    ShelfStore &m_store;
    const Localizer &m_texts;
    const RowActions &m_actions;
};
