#pragma once

#include "platform/linux/files/BookmarkCoding.h"
#include "platform/linux/files/FolderMemory.h"
#include "platform/linux/files/LinuxBookmarks.h"
#include "platform/linux/files/MountTable.h"
#include "platform/linux/files/OutsideSearches.h"
#include "platform/linux/files/RemoteLooks.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

/// What a query comes to when it is understood.
struct KnownBookmark
{
    BookmarkQuery query;
    QByteArray path; // Of the url; of the record where that names no file.
    QByteArray folder;
    const char *name = nullptr; // The path's last component.
    bool pathIsUrls = false;
    std::optional<BookmarkRecord> record;
    quint64 mounts = 0; // The table's number when the rest was told.
    bool remote = false;
    bool trashed = false;
};

/// Thousands of queries are the same at each check, every three seconds, and
/// nearly all at the same place of the list: those are understood once.
struct BookmarkMemo
{
    QList<KnownBookmark> known; // One a query.
    QList<int> order; // Queries by folder, so that neighbours follow each other.
};

/// What the checks share.
struct BookmarkParts
{
    using Clock = std::chrono::steady_clock;

    BookmarkParts(LinuxBookmarks::Places p, LinuxBookmarks::Bounds b)
        : places(std::move(p))
        , bounds(std::move(b))
    {
    }

    /// A volume that is not there may still come: sessions mount disks late.
    bool isEarly() const
    {
        return std::chrono::duration<double>(Clock::now() - start).count() < bounds.lateVolumes;
    }

    const LinuxBookmarks::Places places;
    const LinuxBookmarks::Bounds bounds;
    const Clock::time_point start = Clock::now();
    MountTable mounts { places.mountTable };
    FolderMemory memory { bounds.watchedFolders, bounds.moves };
    RemoteLooks remote { bounds.remoteLook };
    const std::shared_ptr<OutsideSearches> outside
        = std::make_shared<OutsideSearches>(bounds.outside, bounds.walksApart);
    std::mutex memoMutex;
    BookmarkMemo memo;
    /// The folder in which files were added a moment ago: thousands come at a time.
    struct
    {
        std::mutex mutex;
        QByteArray path; // Found to be local.
        quint64 mounts = 0;
        Clock::time_point until;
        dev_t device = 0;
        quint64 fileSystem = 0;
    } added;
};
