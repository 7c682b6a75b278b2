#include "store/Locating.h"

#include <utility>

namespace {

using Outcome = BookmarkAnswer::Outcome;

QList<BookmarkQuery> queriesFor(const QList<ShelfItem> &items)
{
    QList<BookmarkQuery> queries;
    queries.reserve(items.size());
    for (const ShelfItem &item : items)
        queries.append({ item.url, item.bookmark });
    return queries;
}

/// Beside the desktop's own trash: the folders in which other systems keep
/// theirs, on whatever volume.
bool isTrashed(const BookmarkAnswer &answer)
{
    const QString path = answer.url.path(QUrl::PrettyDecoded) + u'/';
    return answer.trashed || path.contains(QLatin1String("/.Trash/"))
        || path.contains(QLatin1String("/.Trashes/"));
}

bool isGone(const ShelfItem &item, const BookmarkAnswer &answer)
{
    return answer.outcome == Outcome::Gone
        || (answer.outcome == Outcome::Resolved && item.bookmark && isTrashed(answer));
}

bool hasMoved(const ShelfItem &item, const BookmarkAnswer &answer)
{
    return answer.outcome == Outcome::Resolved && (answer.newBookmark || answer.url != item.url);
}

}

QList<LocateResult> Locating::changes(Bookmarks &bookmarks, const QList<ShelfItem> &items)
{
    QList<LocateResult> results;
    const auto answers = bookmarks.resolve(queriesFor(items), Bookmarks::Bound::Background);
    for (qsizetype i = 0; i < items.size(); ++i) {
        const ShelfItem &item = items.at(i);
        const BookmarkAnswer &answer = answers.at(i);
        if (isGone(item, answer))
            results.append({ item.id, item.url, std::nullopt });
        else if (hasMoved(item, answer))
            results.append(
                { item.id, item.url, LocateResult::Found { answer.url, answer.newBookmark } });
    }
    return results;
}

void Locating::keepLocated(Bookmarks &bookmarks, QList<Shelf> &shelves)
{
    QList<BookmarkQuery> queries;
    for (const Shelf &shelf : std::as_const(shelves))
        queries += queriesFor(shelf.items);
    if (queries.isEmpty())
        return;
    const auto answers = bookmarks.resolve(queries, Bookmarks::Bound::Brief);
    auto answer = answers.begin();
    for (Shelf &shelf : shelves) {
        QList<ShelfItem> kept;
        kept.reserve(shelf.items.size());
        for (ShelfItem &item : shelf.items) {
            if (!isGone(item, *answer) && answer->outcome != Outcome::Searching) {
                if (hasMoved(item, *answer))
                    item.url = answer->url;
                if (answer->newBookmark)
                    item.bookmark = answer->newBookmark;
                kept.append(std::move(item));
            }
            ++answer;
        }
        shelf.items = std::move(kept);
    }
}

QList<bool> Locating::present(Bookmarks &bookmarks, const QList<QUrl> &urls)
{
    QList<BookmarkQuery> queries;
    for (const QUrl &url : urls)
        queries.append({ url, std::nullopt });
    QList<bool> result;
    for (const BookmarkAnswer &answer : bookmarks.resolve(queries, Bookmarks::Bound::Brief))
        result.append(answer.outcome == Outcome::Resolved || answer.outcome == Outcome::Silent);
    return result;
}
