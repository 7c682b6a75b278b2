#include "store/ShelfStore.h"

#include "app/settings/Localizer.h"
#include "store/Addresses.h"

#include <algorithm>

namespace {

constexpr double undoSeconds = 60;

QList<ShelfItem> itemsOf(const QList<std::pair<qsizetype, ShelfItem>> &removed)
{
    QList<ShelfItem> list;
    for (const auto &[index, item] : removed)
        list.append(item);
    return list;
}

}

void ShelfStore::removeIds(const QSet<QUuid> &given)
{
    // A copy: it may be the selection itself, which changes on the way.
    const QSet<QUuid> ids = given; // NOLINT(performance-unnecessary-copy-initialization)
    QList<Removed> removed;
    QList<ShelfItem> rest;
    const auto list = items.value();
    for (qsizetype index = 0; index < list.size(); ++index) {
        if (ids.contains(list.at(index).id))
            removed.emplace_back(index, list.at(index));
        else
            rest.append(list.at(index));
    }
    if (removed.isEmpty())
        return;
    items.set(std::move(rest));
    mirrorCurrent();
    forgetUploads(ids);
    deselect(ids);
    save();
    m_sounds.play(Sound::Tink);
    stashForUndo(std::move(removed));
}

void ShelfStore::removeUrls(const QList<Address> &urls)
{
    QSet<QByteArray> wanted;
    for (const Address &url : urls)
        wanted.insert(url.isLocalFile() ? Addresses::key(url) : url.text);
    QSet<QUuid> ids;
    for (const ShelfItem &item : items.value()) {
        if (wanted.contains(Addresses::key(item.url))
            || (item.link && wanted.contains(item.link->url().text)))
            ids.insert(item.id);
    }
    removeIds(ids);
}

void ShelfStore::clear()
{
    QList<Removed> removed;
    const auto list = items.value();
    for (qsizetype index = 0; index < list.size(); ++index)
        removed.emplace_back(index, list.at(index));
    if (removed.isEmpty())
        return;
    // All transfers, those of other shelves too: the table is not kept by shelf.
    for (const auto &cancel : std::exchange(uploadCancels, {}))
        cancel();
    items.set({});
    mirrorCurrent();
    uploading.set({});
    progress.set({});
    selection.set({});
    m_anchor.reset();
    save();
    m_sounds.play(Sound::Tink);
    stashForUndo(std::move(removed));
}

void ShelfStore::forgetUploads(const QSet<QUuid> &ids)
{
    for (const QUuid &id : ids) {
        if (const auto cancel = uploadCancels.take(id))
            cancel();
    }
    auto nowUploading = uploading.value();
    auto nowProgress = progress.value();
    for (const QUuid &id : ids) {
        nowUploading.remove(id);
        nowProgress.remove(id);
    }
    if (nowUploading != uploading.value())
        uploading.set(std::move(nowUploading));
    if (nowProgress != progress.value())
        progress.set(std::move(nowProgress));
}

void ShelfStore::deselect(const QSet<QUuid> &ids)
{
    if (selection.value().intersects(ids))
        selection.set(selection.value() - ids);
}

void ShelfStore::stashForUndo(QList<Removed> removed)
{
    commitRemoval(); // There is one stash: the earlier removal is final now.
    m_lastRemoved = std::move(removed);
    m_lastRemovedShelf = currentID.value();
    const auto count = m_lastRemoved.size();
    if (onRemoved)
        onRemoved(itemsOf(m_lastRemoved));
    publish(count == 1 ? m_texts.text(QStringLiteral("removed_one_undo"))
                       : m_texts.text(QStringLiteral("removed_n_undo"), { qint64(count) }));
    m_purge = m_queue.after(undoSeconds, [this] { commitRemoval(); });
}

void ShelfStore::commitRemoval()
{
    m_purge.reset();
    discardManaged(itemsOf(std::exchange(m_lastRemoved, {})));
}

bool ShelfStore::undoRemove()
{
    if (m_lastRemoved.isEmpty())
        return false;
    m_purge.reset();
    if (m_lastRemovedShelf)
        switchTo(*m_lastRemovedShelf); // Stays here if that shelf is open no more.
    // What does not come back keeps its managed file until the next start's sweep.
    const auto restored = putBack(std::exchange(m_lastRemoved, {}));
    if (restored.isEmpty())
        return false;
    save();
    m_sounds.play(Sound::Pop);
    if (onRestored)
        onRestored(restored);
    publish(m_texts.text(QStringLiteral("restored_n"), { qint64(restored.size()) }));
    return true;
}

/// Merges rather than inserts one by one, which would be quadratic: the stash is
/// in the order of its positions, so each entry lands where a single insertion
/// would put it.
QList<ShelfItem> ShelfStore::putBack(const QList<Removed> &removed)
{
    QList<ShelfItem> restored;
    QList<ShelfItem> next;
    const auto present = items.value();
    auto known = Addresses::keys(present);
    auto rest = present.begin();
    QList<QUrl> urls;
    for (const auto &[index, item] : removed)
        urls.append(item.url);
    const auto exists = Locating::present(m_bookmarks, urls);
    for (qsizetype i = 0; i < removed.size(); ++i) {
        const auto &[index, item] = removed.at(i);
        // A file that vanished in the meantime does not come back as a dead row.
        if (!exists.at(i) || !Addresses::insertNew(known, item.url))
            continue;
        const auto before = std::clamp<qsizetype>(index - next.size(), 0, present.end() - rest);
        std::copy(rest, rest + before, std::back_inserter(next));
        rest += before;
        next.append(item);
        restored.append(item);
    }
    if (restored.isEmpty())
        return restored;
    std::copy(rest, present.end(), std::back_inserter(next));
    items.set(std::move(next));
    mirrorCurrent();
    return restored;
}

void ShelfStore::pruneExpired(double maxAge)
{
    if (!(maxAge > 0))
        return;
    const double cutoff = m_queue.now() - maxAge;
    auto removed = takeExpiredElsewhere(cutoff);
    removed += takeExpiredHere(cutoff);
    if (removed.isEmpty())
        return;
    if (onRemoved)
        onRemoved(removed);
    save();
    discardManaged(removed);
}

QList<ShelfItem> ShelfStore::takeExpiredElsewhere(double cutoff)
{
    QList<ShelfItem> removed;
    auto next = shelves.value();
    for (Shelf &shelf : next) {
        if (shelf.pinned || shelf.id == currentID.value())
            continue;
        auto list = shelf.items;
        if (const auto expired = takeExpired(list, cutoff); !expired.isEmpty()) {
            removed += expired;
            shelf.items = std::move(list);
        }
    }
    if (!removed.isEmpty())
        shelves.set(std::move(next));
    return removed;
}

QList<ShelfItem> ShelfStore::takeExpiredHere(double cutoff)
{
    const auto shelf = currentShelf();
    if (shelf && shelf->pinned)
        return {};
    auto list = items.value();
    auto removed = takeExpired(list, cutoff);
    if (removed.isEmpty())
        return removed;
    items.set(std::move(list));
    mirrorCurrent();
    QSet<QUuid> present;
    for (const ShelfItem &item : items.value())
        present.insert(item.id);
    deselect(selection.value() - present);
    return removed;
}

QList<ShelfItem> ShelfStore::takeExpired(QList<ShelfItem> &list, double cutoff) const
{
    QList<ShelfItem> expired;
    QList<ShelfItem> kept;
    for (const ShelfItem &item : list) {
        const bool isExpired = item.addedAt < cutoff && !uploading.value().contains(item.id);
        (isExpired ? expired : kept).append(item);
    }
    if (!expired.isEmpty())
        list = std::move(kept);
    return expired;
}
