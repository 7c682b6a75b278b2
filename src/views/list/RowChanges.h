#pragma once

#include "store/ShelfItem.h"

#include <QList>

#include <optional>
#include <vector>

/// One step that brings a list of rows nearer to another list. Positions are
/// those of the list as the steps before it left it.
struct RowChange
{
    enum class Kind {
        Remove, // Rows first to first + count - 1 leave.
        Move, // Row first is taken out and put in again at position to.
        Insert, // Rows first to first + count - 1 are new; positions of the final list.
        Update, // The same entries with other fields.
    };

    Kind kind = Kind::Update;
    int first = 0;
    int count = 1;
    int to = 0;

    bool operator==(const RowChange &) const = default;
};

using RowChanges = std::vector<RowChange>;

/// The steps from one list to the other, by the entries' ids: removals from the
/// end, the fewest possible moves, insertions from the beginning, updates. None
/// where so much changed, or an id occurs twice, that starting anew is better.
std::optional<RowChanges> rowChanges(const QList<ShelfItem> &before, const QList<ShelfItem> &after);

/// Where a row of the final list stood at first; none if it is new.
std::optional<int> previousRow(const RowChanges &changes, int row);
