#pragma once

#include "platform/Bookmarks.h"
#include "store/Shelf.h"

/// What a check of the locations found out about one entry.
struct LocateResult
{
    struct Found
    {
        QUrl url; // Where the file is now.
        std::optional<QByteArray> newBookmark; // Replaces the stored one.
    };

    QUuid id;
    QUrl url; // The entry's when the check began.
    std::optional<Found> found; // None: the file is gone.
};

/// Where the files of entries are now. A file in a trash folder counts as gone,
/// if its entry has a bookmark; without one only the path counts. Any thread.
namespace Locating {

/// What has changed. Nothing is said of an entry whose file is where it was,
/// whose search has not ended, or whose file system has not answered.
QList<LocateResult> changes(Bookmarks &bookmarks, const QList<ShelfItem> &items);

/// Leaves out the entries whose file is not found within the brief bound, and
/// lets the others follow theirs. What did not answer was not found missing.
/// All shelves together cost one look-up.
void keepLocated(Bookmarks &bookmarks, QList<Shelf> &shelves);

/// Whether there is a file at each address; one that did not answer counts.
QList<bool> present(Bookmarks &bookmarks, const QList<QUrl> &urls);

}
