#include "views/list/ItemListModel.h"

#include "base/FilePath.h"

#include <algorithm>

QString itemTitle(const ShelfItem &item)
{
    if (item.preview)
        return *item.preview;
    return FilePath::display(FilePath::lastComponent(FilePath::fromUrl(item.url)));
}

QString itemSubtitle(const ShelfItem &item)
{
    if (item.link)
        return item.link->text();
    return FilePath::display(FilePath::parent(FilePath::fromUrl(item.url)));
}

std::optional<RowChanges> ItemListModel::update(const QList<ShelfItem> &next)
{
    auto changes = rowChanges(m_items, next);
    if (!changes) {
        beginResetModel();
        m_items = next;
        endResetModel();
        return changes;
    }
    const auto updates = std::ranges::find(*changes, RowChange::Kind::Update, &RowChange::kind);
    for (auto change = changes->begin(); change != updates; ++change)
        apply(*change, next, change + 1 == updates);
    m_items = next;
    for (auto change = updates; change != changes->end(); ++change)
        Q_EMIT dataChanged(index(change->first), index(change->first + change->count - 1));
    return changes;
}

/// The last step takes the final list over as it is: the usual single step then
/// copies nothing.
void ItemListModel::apply(const RowChange &change, const QList<ShelfItem> &next, bool isLast)
{
    const int last = change.first + change.count - 1;
    switch (change.kind) {
    case RowChange::Kind::Remove:
        beginRemoveRows({}, change.first, last);
        if (isLast)
            m_items = next;
        else
            m_items.remove(change.first, change.count);
        endRemoveRows();
        break;
    case RowChange::Kind::Move:
        beginMoveRows({}, change.first, change.first, {},
                      change.to > change.first ? change.to + 1 : change.to);
        if (isLast)
            m_items = next;
        else
            m_items.move(change.first, change.to);
        endMoveRows();
        break;
    case RowChange::Kind::Insert:
        beginInsertRows({}, change.first, last);
        if (isLast) {
            m_items = next;
        } else {
            m_items.insert(change.first, change.count, ShelfItem());
            std::copy_n(next.begin() + change.first, change.count, m_items.begin() + change.first);
        }
        endInsertRows();
        break;
    case RowChange::Kind::Update:
        break;
    }
}

int ItemListModel::rowOf(const QUuid &id) const
{
    const auto found = std::ranges::find(m_items, id, &ShelfItem::id);
    return found == m_items.end() ? -1 : static_cast<int>(found - m_items.begin());
}

int ItemListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_items.size());
}

QVariant ItemListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_items.size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return itemTitle(m_items[index.row()]);
    case Qt::AccessibleDescriptionRole:
        return itemSubtitle(m_items[index.row()]);
    default:
        return {};
    }
}
