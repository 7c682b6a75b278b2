#include "store/Locating.h"

#include <utility>

namespace {

using Outcome = BookmarkAnswer::Outcome;
using State = LocateResult::State;

QList<BookmarkQuery> queriesFor(const QList<ShelfItem> &items)
{
    QList<BookmarkQuery> queries;
    queries.reserve(items.size());
    for (const ShelfItem &item : items)
        queries.append({ item.url, item.bookmark });
    return queries;
}

std::optional<State> stateOf(const BookmarkAnswer &answer)
{
    switch (answer.outcome) {
    case Outcome::Found:
        return answer.trashed ? State::Trashed : State::Found;
    case Outcome::Missing:
        return State::Missing;
    case Outcome::Absent:
        return State::Absent;
    case Outcome::Unanswered:
        break;
    }
    return std::nullopt;
}

}

QList<LocateResult> Locating::differences(Bookmarks &bookmarks, const QList<ShelfItem> &items)
{
    QList<LocateResult> results;
    const auto answers = bookmarks.resolve(queriesFor(items), Bookmarks::Bound::Background);
    for (qsizetype i = 0; i < items.size(); ++i) {
        const ShelfItem &item = items.at(i);
        const BookmarkAnswer &answer = answers.at(i);
        const auto state = stateOf(answer);
        if (state && (state != State::Found || answer.newBookmark || answer.url != item.url))
            results.append({ item.id, item.url, *state, answer.url, answer.newBookmark });
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
            const auto state = stateOf(*answer);
            if (state == State::Found)
                item.url = answer->url;
            if (state == State::Found && answer->newBookmark)
                item.bookmark = answer->newBookmark;
            if (state != State::Trashed && state != State::Absent)
                kept.append(std::move(item));
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
        result.append(answer.outcome == Outcome::Found || answer.outcome == Outcome::Unanswered);
    return result;
}
