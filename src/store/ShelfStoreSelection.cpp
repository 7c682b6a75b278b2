#include "store/ShelfStore.h"

#include <algorithm>

void ShelfStore::click(const QUuid &id, Modifiers modifiers)
{
    focus.set(id);
    if (modifiers & EventModifier::Command) {
        auto next = selection.value();
        if (!next.remove(id))
            next.insert(id);
        selection.set(std::move(next));
        m_anchor = id;
        return;
    }
    const qsizetype anchor = itemIndex(m_anchor);
    const qsizetype clicked = itemIndex(id);
    if ((modifiers & EventModifier::Shift) && anchor >= 0 && clicked >= 0) {
        selectRange(anchor, clicked);
        return;
    }
    selection.set({ id });
    m_anchor = id;
}

void ShelfStore::moveSelection(int step, Extend extend)
{
    const auto &list = items.value();
    if (list.isEmpty())
        return;
    qsizetype start = itemIndex(focus.value());
    if (start < 0)
        start = step < 1 ? list.size() : -1; // The first press lands on the list's edge.
    const qsizetype target = std::clamp<qsizetype>(start + step, 0, list.size() - 1);
    const QUuid id = list.at(target).id;
    const qsizetype anchor = itemIndex(m_anchor);
    if (extend == Extend::Yes && anchor >= 0) {
        selectRange(anchor, target);
    } else {
        selection.set({ id });
        m_anchor = id;
    }
    focus.set(id);
}

void ShelfStore::selectRange(qsizetype from, qsizetype to)
{
    QSet<QUuid> ids;
    for (qsizetype index = std::min(from, to); index <= std::max(from, to); ++index)
        ids.insert(items.value().at(index).id);
    selection.set(std::move(ids));
}

void ShelfStore::selectAll()
{
    if (items.value().isEmpty())
        selection.set({});
    else
        selectRange(0, items.value().size() - 1);
}

void ShelfStore::deselectAll()
{
    selection.set({});
    m_anchor.reset();
    focus.set(std::nullopt);
}

QList<ShelfItem> ShelfStore::selectedItems() const
{
    QList<ShelfItem> selected;
    for (const ShelfItem &item : items.value()) {
        if (selection.value().contains(item.id))
            selected.append(item);
    }
    return selected;
}

QList<ShelfItem> ShelfStore::targets(const ShelfItem &item) const
{
    const bool together = selection.value().size() >= 2 && selection.value().contains(item.id);
    return together ? selectedItems() : QList { item };
}

std::optional<QList<Address>> ShelfStore::dragURLs() const
{
    const qsizetype pressed = itemIndex(pressedID);
    if (pressed < 0)
        return std::nullopt;
    QList<Address> urls;
    for (const ShelfItem &item : targets(items.value().at(pressed)))
        urls.append(item.target());
    return urls;
}
