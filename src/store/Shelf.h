#pragma once

#include "store/ShelfItem.h"

#include <QList>

/// One named list.
struct Shelf
{
    QUuid id;
    std::optional<QString> name; // The user's; an empty name is a name.
    bool pinned = false;
    QList<ShelfItem> items; // In display order.
    std::optional<double> closedAt; // Seconds since 2001-01-01 UTC; none on open shelves.

    bool operator==(const Shelf &) const = default;
};

/// The persisted whole.
struct ShelfState
{
    QUuid current;
    QList<Shelf> shelves; // Open, in order.
    QList<Shelf> closed; // Newest first.

    bool operator==(const ShelfState &) const = default;
};

/// A row for menus, computed on demand and never stored.
struct ShelfInfo
{
    QUuid id;
    QString title;
    int count = 0;
    bool pinned = false;

    bool operator==(const ShelfInfo &) const = default;
};

/// One transient message for the panel's toast. Ids only grow, so two notices
/// with one text differ and each is shown.
struct ShelfNotice
{
    int id = 0;
    QString text;

    bool operator==(const ShelfNotice &) const = default;
};
