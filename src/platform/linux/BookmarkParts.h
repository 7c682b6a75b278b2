#pragma once

#include "platform/linux/BookmarkMemo.h"
#include "platform/linux/FolderMemory.h"
#include "platform/linux/LinuxBookmarks.h"
#include "platform/linux/MountTable.h"
#include "platform/linux/OutsideSearches.h"
#include "platform/linux/RemoteLooks.h"
#include "platform/linux/Volumes.h"

#include <QByteArray>

#include <chrono>
#include <mutex>

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
    FileSystemNumbers systems;
    FolderMemory memory { bounds.watchedFolders, bounds.moves };
    RemoteLooks remote { bounds.remoteLook };
    OutsideSearches outside { bounds.outside, bounds.walksApart };
    std::mutex memoMutex;
    BookmarkMemo memo;
    std::mutex folderMutex;
    QByteArray localFolder; // Was found to be local a moment ago.
    quint64 localFolderMounts = 0;
    Clock::time_point localFolderUntil;
};
