#pragma once

#include "platform/Bookmarks.h"
#include "platform/Directories.h"
#include "platform/linux/files/FileIdentity.h"
#include "platform/linux/files/InodeSearch.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <memory>

struct BookmarkParts;

/// Follows files by what statx tells of their identity: by path as long as
/// something is there, then by what the kernel told of renames, by a look into the
/// folders at hand, and by walks of their file system outside of the checks. Only
/// files with a birth time can be searched for.
///
/// Something at the entry's own address always counts as the file, also where
/// the former one is known to have been moved away: editors that keep a backup
/// rename the old file and write a new one.
class LinuxBookmarks final : public Bookmarks
{
public:
    struct Places
    {
        QByteArray homeTrash;
        QList<QByteArray> userFolders {}; // Where users put files.
        QByteArray mountTable = "/proc/self/mountinfo";
    };
    struct Bounds
    {
        double brief = 0.3; // Seconds for a brief check in all.
        double remote = 3; // Seconds that a background check waits for network mounts.
        InodeSearch::Limits near { 0.5, 500'000 }; // Of the look at folders at hand, in a check.
        InodeSearch::Limits outside { 300, 50'000'000 }; // Of one walk of a file system.
        double walksApart = 2; // Seconds between the two walks that call a file absent.
        double lateVolumes = 60; // Seconds of a run in which a volume may still come.
        qsizetype moves = 4096; // Told by the kernel and remembered.
        qsizetype watchedFolders = 512;
        std::function<FileLook(const QByteArray &)> remoteLook
            = [](const QByteArray &path) { return lookAt(path); };
    };
    static Places placesOf(const Directories &directories);

    explicit LinuxBookmarks(Places places);
    LinuxBookmarks(Places places, Bounds bounds);
    ~LinuxBookmarks() override;
    LinuxBookmarks(const LinuxBookmarks &) = delete;
    LinuxBookmarks &operator=(const LinuxBookmarks &) = delete;

    Bookmarked make(const QUrl &url) override;
    bool mayBeOf(const QByteArray &bookmark, const QUrl &url) override;
    QList<BookmarkAnswer> resolve(const QList<BookmarkQuery> &queries, Bound bound) override;

private:
    std::shared_ptr<BookmarkParts> m_parts;
};
