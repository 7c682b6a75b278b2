#include "store/ShelfStore.h"

#include <utility>

void ShelfStore::refreshLocationsInBackground()
{
    if (m_refreshingLocations || items.value().isEmpty())
        return;
    m_refreshingLocations = true;
    m_workers.run(WorkerPriority::Utility,
                  [this, &queue = m_queue, &bookmarks = m_bookmarks, alive = std::weak_ptr(m_alive),
                   snapshot = items.value()] {
                      queue.post([this, alive, results = Locating::changes(bookmarks, snapshot)] {
                          if (!alive.lock())
                              return;
                          m_refreshingLocations = false;
                          applyLocations(results);
                      });
                  });
}

/// Merges into a list that may have changed in the meantime: what is said of an
/// entry that has left, or has another address by now, is out of date.
void ShelfStore::applyLocations(const QList<LocateResult> &results)
{
    if (results.isEmpty())
        return; // The usual case, every few seconds: nothing has moved.
    QHash<QUuid, const LocateResult *> news;
    for (const LocateResult &result : results)
        news.insert(result.id, &result);
    QSet<QUuid> gone;
    bool changed = false;
    QList<ShelfItem> next;
    for (const ShelfItem &item : items.value()) {
        const LocateResult *result = news.value(item.id);
        const bool applies = result != nullptr && result->url == item.url;
        if (applies && !result->found) {
            gone.insert(item.id);
            continue;
        }
        next.append(item);
        if (!applies)
            continue;
        changed = true;
        next.last().url = result->found->url;
        if (result->found->newBookmark)
            next.last().bookmark = result->found->newBookmark;
    }
    if (!changed && gone.isEmpty())
        return;
    // Quietly: this is no removal, so there is no undo, no notice and no sound.
    forgetUploads(gone);
    deselect(gone);
    commit(std::move(next));
}
