#pragma once

#include "platform/Bookmarks.h"
#include "store/Shelf.h"

/// What a check of the locations found out about one entry.
struct LocateResult
{
    enum class State {
        Found, // At `now`.
        Missing, // Nowhere so far.
        Absent, // Nowhere, and everything was searched.
        Trashed,
    };

    QUuid id;
    QUrl url; // The entry's when the check began.
    State state = State::Found;
    QUrl now;
    std::optional<QByteArray> newBookmark; // Replaces the stored one.
};

/// Where the files of entries are now. A file that was thrown away counts as
/// gone, if its entry has a bookmark; without one only the path counts. Any thread.
namespace Locating {

/// What differs. Nothing is said of an entry whose file is where it was, or whose
/// file system has not answered.
QList<LocateResult> differences(Bookmarks &bookmarks, const QList<ShelfItem> &items);

/// Lets the entries follow their files, and leaves out those whose file was
/// thrown away or is absent. What is still searched for, or did not answer within
/// the brief bound, was not found missing. All shelves together cost one look-up.
void keepLocated(Bookmarks &bookmarks, QList<Shelf> &shelves);

/// Whether there is a file at each address; one that did not answer counts.
QList<bool> present(Bookmarks &bookmarks, const QList<QUrl> &urls);

}
