#include "store/ShelfStore.h"

#include <utility>

namespace {

/// Seconds from the end of one look that found a file missing to the begin of
/// another that may call it gone: editors and file managers are through by then.
constexpr double betweenLooks = 2;

}

void ShelfStore::refreshLocationsInBackground()
{
    if (m_refreshingLocations || items.value().isEmpty())
        return;
    m_refreshingLocations = true;
    m_workers.run(
        WorkerPriority::Utility,
        [this, &queue = m_queue, &bookmarks = m_bookmarks, alive = std::weak_ptr(m_alive),
         snapshot = items.value(), begin = m_queue.uptime()] {
            queue.post([this, alive, begin, results = Locating::differences(bookmarks, snapshot)] {
                if (!alive.lock())
                    return;
                m_refreshingLocations = false;
                applyLocations(results, begin);
            });
        });
}

/// Whether a result changes its entry now. A file that was found does, and one that
/// was thrown away; that one is absent needs two successive checks that agree.
/// `missed` gets what the next check must know.
bool ShelfStore::counts(const LocateResult &result, double begin, Missed &missed) const
{
    using State = LocateResult::State;
    if (result.state == State::Found || result.state == State::Trashed)
        return true;
    const auto before = m_missed.constFind(result.id);
    const bool again = before != m_missed.cend() && before->first == result.url;
    if (again && result.state == State::Absent && begin - before->second >= betweenLooks)
        return true;
    missed.insert(result.id, { result.url, again ? before->second : m_queue.uptime() });
    return false;
}

/// Merges into a list that may have changed in the meantime: what is said of an
/// entry that has left, or has another address by now, is out of date.
void ShelfStore::applyLocations(const QList<LocateResult> &results, double begin)
{
    Missed missed;
    QHash<QUuid, const LocateResult *> news;
    for (const LocateResult &result : results) {
        if (counts(result, begin, missed))
            news.insert(result.id, &result);
    }
    m_missed = std::move(missed);
    if (news.isEmpty())
        return; // The usual case, every few seconds: nothing has moved.
    QSet<QUuid> gone;
    bool changed = false;
    QList<ShelfItem> next;
    for (const ShelfItem &item : items.value()) {
        const LocateResult *result = news.value(item.id);
        const bool applies = result != nullptr && result->url == item.url;
        if (applies && result->state != LocateResult::State::Found) {
            gone.insert(item.id);
            continue;
        }
        next.append(item);
        if (!applies)
            continue;
        changed = true;
        next.last().url = result->now;
        if (result->newBookmark)
            next.last().bookmark = result->newBookmark;
    }
    if (!changed && gone.isEmpty())
        return;
    // Quietly: this is no removal, so there is no undo, no notice and no sound.
    forgetUploads(gone);
    deselect(gone);
    commit(std::move(next));
}
