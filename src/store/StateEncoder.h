#pragma once

#include "store/Shelf.h"

#include <QByteArrayList>
#include <QHash>

/// Writes the state file's JSON again and again: lists of entries that did not
/// change since the last time are not made anew, and in one that did the bytes of
/// equal entries are copied. What comes out is what a new encoder would make.
class StateEncoder
{
public:
    /// The file's bytes in pieces, most of which are those of the last time.
    QByteArrayList encode(const ShelfState &state);

private:
    struct Written
    {
        QList<ShelfItem> items; // Shared with the shelf as long as that does not change.
        QByteArray bytes; // Of the entries, with commas.
        QList<qsizetype> ends; // Of each entry's bytes.

        QByteArrayView bytesOf(qsizetype index) const; // Empty for none.
    };

    Written write(const Shelf &shelf) const;

    QHash<QUuid, Written> m_written; // By the shelf's id.
};
