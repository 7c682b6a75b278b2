#include "views/list/RowChanges.h"

#include <QHash>

#include <algorithm>

namespace {

// Beyond these a view is quicker when it begins anew than when it follows.
constexpr size_t mostMoves = 64;
constexpr size_t mostSteps = 128;

using Positions = std::vector<int>;

/// Appends a row to the last range where it continues it.
void addRow(RowChanges &changes, RowChange::Kind kind, int row)
{
    if (!changes.empty()) {
        auto &last = changes.back();
        if (last.kind == kind && last.first + last.count == row) {
            ++last.count;
            return;
        }
    }
    changes.push_back({ kind, row, 1, 0 });
}

/// For each position whether it belongs to one longest increasing subsequence.
std::vector<bool> longestIncreasing(const Positions &values)
{
    Positions ends; // ends[n]: index of the smallest value that ends a run of n + 1.
    Positions before(values.size(), -1);
    for (int i = 0; i < static_cast<int>(values.size()); ++i) {
        const auto place = std::ranges::lower_bound(ends, values[size_t(i)], {},
                                                    [&](int end) { return values[size_t(end)]; });
        if (place != ends.begin())
            before[size_t(i)] = *(place - 1);
        if (place == ends.end())
            ends.push_back(i);
        else
            *place = i;
    }
    std::vector<bool> result(values.size());
    for (int i = ends.empty() ? -1 : ends.back(); i >= 0; i = before[size_t(i)])
        result[size_t(i)] = true;
    return result;
}

/// Sorts the survivors, each of which is its final position, by the fewest
/// moves. Survivor 0 stands in row `offset`.
bool addMoves(RowChanges &changes, Positions survivors, int offset)
{
    if (std::ranges::is_sorted(survivors))
        return true;
    const auto stays = longestIncreasing(survivors);
    if (static_cast<size_t>(std::ranges::count(stays, false)) > mostMoves)
        return false;
    Positions movers;
    for (size_t i = 0; i < survivors.size(); ++i) {
        if (!stays[i])
            movers.push_back(survivors[i]);
    }
    auto order = survivors;
    std::ranges::sort(order);
    std::ranges::sort(movers);
    for (const int mover : movers) {
        // Behind its predecessor, which is either in place already or never moves.
        const auto place = std::ranges::lower_bound(order, mover);
        const auto from = std::ranges::find(survivors, mover) - survivors.begin();
        survivors.erase(survivors.begin() + from);
        const auto to = place == order.begin()
            ? 0
            : std::ranges::find(survivors, *(place - 1)) - survivors.begin() + 1;
        survivors.insert(survivors.begin() + to, mover);
        if (from != to) {
            changes.push_back({ RowChange::Kind::Move, offset + static_cast<int>(from), 1,
                                offset + static_cast<int>(to) });
        }
    }
    return true;
}

/// The part of both lists between a common beginning and a common end.
struct Middle
{
    int first = 0;
    int beforeEnd = 0;
    int afterEnd = 0;
};

Middle middleOf(const QList<ShelfItem> &before, const QList<ShelfItem> &after)
{
    Middle result { 0, static_cast<int>(before.size()), static_cast<int>(after.size()) };
    while (result.first < std::min(result.beforeEnd, result.afterEnd)
           && before[result.first].id == after[result.first].id)
        ++result.first;
    while (std::min(result.beforeEnd, result.afterEnd) > result.first
           && before[result.beforeEnd - 1].id == after[result.afterEnd - 1].id) {
        --result.beforeEnd;
        --result.afterEnd;
    }
    return result;
}

/// The middle's part of the steps. Fills in where each row of `after` was before.
bool addMiddle(RowChanges &changes, const QList<ShelfItem> &before, const QList<ShelfItem> &after,
               const Middle &middle, Positions &origins)
{
    QHash<QUuid, int> places;
    places.reserve(middle.afterEnd - middle.first);
    for (int row = middle.first; row < middle.afterEnd; ++row)
        places.insert(after[row].id, row);
    if (places.size() != middle.afterEnd - middle.first)
        return false;

    Positions survivors;
    RowChanges removals;
    for (int row = middle.first; row < middle.beforeEnd; ++row) {
        const int place = places.value(before[row].id, -1);
        if (place < 0) {
            addRow(removals, RowChange::Kind::Remove, row);
        } else {
            if (origins[size_t(place)] >= 0)
                return false;
            origins[size_t(place)] = row;
            survivors.push_back(place);
        }
    }
    changes.insert(changes.end(), removals.rbegin(), removals.rend());
    if (!addMoves(changes, std::move(survivors), middle.first))
        return false;
    for (int row = middle.first; row < middle.afterEnd; ++row) {
        if (origins[size_t(row)] < 0)
            addRow(changes, RowChange::Kind::Insert, row);
    }
    return true;
}

}

std::optional<RowChanges> rowChanges(const QList<ShelfItem> &before, const QList<ShelfItem> &after)
{
    RowChanges changes;
    if (before.isSharedWith(after))
        return changes;
    const auto middle = middleOf(before, after);
    Positions origins(static_cast<size_t>(after.size()), -1);
    if (!addMiddle(changes, before, after, middle, origins) || changes.size() > mostSteps)
        return std::nullopt;
    const int shift = middle.beforeEnd - middle.afterEnd;
    for (int row = 0; row < after.size(); ++row) {
        const int origin = row < middle.first ? row
            : row >= middle.afterEnd          ? row + shift
                                              : origins[size_t(row)];
        if (origin >= 0 && before[origin] != after[row])
            addRow(changes, RowChange::Kind::Update, row);
    }
    return changes;
}

std::optional<int> previousRow(const RowChanges &changes, int row)
{
    for (size_t step = changes.size(); step-- > 0;) {
        const RowChange &change = changes[step];
        switch (change.kind) {
        case RowChange::Kind::Insert:
            if (row >= change.first + change.count)
                row -= change.count;
            else if (row >= change.first)
                return std::nullopt;
            break;
        case RowChange::Kind::Move:
            if (row == change.to)
                row = change.first;
            else if (change.first < change.to)
                row += row >= change.first && row < change.to ? 1 : 0;
            else
                row -= row > change.to && row <= change.first ? 1 : 0;
            break;
        case RowChange::Kind::Remove:
            if (row >= change.first)
                row += change.count;
            break;
        case RowChange::Kind::Update:
            break;
        }
    }
    return row;
}
