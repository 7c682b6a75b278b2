#pragma once

#include "platform/linux/BookmarkMemo.h"
#include "platform/linux/FolderMemory.h"
#include "platform/linux/LinuxBookmarks.h"
#include "platform/linux/MountTable.h"
#include "platform/linux/OutsideSearches.h"
#include "platform/linux/RemoteLooks.h"
#include "platform/linux/Volumes.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <mutex>

/// What the checks share.
struct BookmarkParts
{
    BookmarkParts(LinuxBookmarks::Places p, LinuxBookmarks::Bounds b)
        : places(std::move(p))
        , bounds(std::move(b))
    {
    }

    const LinuxBookmarks::Places places;
    const LinuxBookmarks::Bounds bounds;
    MountTable mounts { places.mountTable };
    FileSystemNumbers systems;
    FolderMemory memory { bounds.watchedFolders };
    RemoteLooks remote { bounds.remoteLook };
    OutsideSearches outside { bounds.outside, bounds.rest };
    std::mutex memoMutex;
    BookmarkMemo memo;
    std::mutex folderMutex;
    QByteArray localFolder; // Was found to be local a moment ago.
    quint64 localFolderMounts = 0;
    std::chrono::steady_clock::time_point localFolderUntil;
};
