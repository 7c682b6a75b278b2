#pragma once

#include "platform/Bookmarks.h"
#include "platform/linux/BookmarkParts.h"
#include "platform/linux/MissingFiles.h"
#include "platform/linux/TrashFolders.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <chrono>
#include <memory>
#include <vector>

/// One call of LinuxBookmarks::resolve.
class LocationCheck
{
public:
    LocationCheck(BookmarkParts &parts, BookmarkMemo &memo, const QList<BookmarkQuery> &queries,
                  Bookmarks::Bound bound);
    QList<BookmarkAnswer> run();

private:
    using Clock = std::chrono::steady_clock;
    /// Queries of one network mount.
    struct RemoteGroup
    {
        QList<int> queries;
        QList<RemoteLooks::Task> tasks;
        std::shared_ptr<RemoteLooks::Job> job;
    };

    void sort();
    void lookInFolders();
    void lookInFolder(int folder);
    void lookFurther();
    void addRemote(int query, const QByteArray &mounted);
    void startRemote();
    void collectRemote();
    bool isLate() const;

    void settle(int query, const FileLook &look);
    void settleAway(int query, const FileLook &look, const QByteArray &otherPath,
                    const FileLook &otherLook);
    void settleWithoutRecord(int query, const FileLook &look);
    bool mayComeLate(const KnownBookmark &known) const;
    void resolve(int query, const QByteArray &path, const FileLook &look);
    QByteArray bookmarkOf(const QByteArray &path, const FileLook &look);
    void findMissing();
    FileLook lookSafely(const QByteArray &path) const;

    BookmarkParts &m_parts;
    BookmarkMemo &m_memo;
    const QList<BookmarkQuery> &m_queries;
    const Bookmarks::Bound m_bound;
    const Clock::time_point m_deadline; // Of a brief check, and for network mounts.
    const std::shared_ptr<const Mounts> m_mounts;
    const TrashFolders m_trash;
    QList<BookmarkAnswer> m_answers;
    std::vector<KnownBookmark> &m_known; // One a query.
    std::vector<std::vector<int>> m_byFolder; // Queries, by the memo's folders.
    std::vector<std::pair<int, FileLook>> m_away; // Not what the bookmark says.
    QList<QByteArray> m_openFolders; // Local folders of entries.
    QHash<QByteArray, RemoteGroup> m_remote; // By mount point.
    QHash<quint64, quint64> m_remoteSystems; // Their own numbers, by device.
    QList<int> m_missing;
    QSet<int> m_uncovered; // Of those, on network mounts: what is near was not read.
};
