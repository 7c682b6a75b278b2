#pragma once

#include "store/ShelfItem.h"
#include "views/list/RowChanges.h"

#include <QAbstractListModel>
#include <QList>

/// The two lines of an entry: its preview or name, and its address or folder.
QString itemTitle(const ShelfItem &item);
QString itemSubtitle(const ShelfItem &item);

/// The rows of the list: the entries of one shelf.
class ItemListModel final : public QAbstractListModel
{
public:
    using QAbstractListModel::QAbstractListModel;

    /// Entries keep their row while their id stays: a changed field repaints one
    /// row, and only a real insertion, removal or move touches the others.
    /// Returns what it did; none where it began anew.
    std::optional<RowChanges> update(const QList<ShelfItem> &next);

    const QList<ShelfItem> &items() const { return m_items; }
    const ShelfItem &item(int row) const { return m_items[row]; }
    /// -1 where the list has no such entry.
    int rowOf(const QUuid &id) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    void apply(const RowChange &change, const QList<ShelfItem> &next, bool isLast);

    QList<ShelfItem> m_items;
};
