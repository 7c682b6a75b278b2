#pragma once

#include "platform/linux/files/BookmarkParts.h"
#include "platform/linux/files/TrashFolders.h"
#include "platform/linux/files/Volumes.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <chrono>
#include <memory>
#include <utility>

/// One call of LinuxBookmarks::resolve.
class LocationCheck
{
public:
    LocationCheck(BookmarkParts &parts, BookmarkMemo &memo, const QList<BookmarkQuery> &queries,
                  Bookmarks::Bound bound);
    QList<BookmarkAnswer> run();

private:
    using Clock = std::chrono::steady_clock;
    /// Missing files of one file system: their queries and their identity now.
    struct MissingGroup
    {
        Volume volume;
        QList<std::pair<int, FileIdentity>> files;
    };

    void understand(const QList<BookmarkQuery> &queries);
    void lookInFolders();
    void addRemote(int query, const QByteArray &mounted);
    void collectRemote();

    void settle(int query, const FileLook &look, const RemoteLooks::Result *remote = nullptr);
    void settleWithoutRecord(int query, const FileLook &look);
    void resolve(int query, const QByteArray &path, const FileLook &look);
    FileLook lookSafely(const QByteArray &path) const;

    // What is not where it was: in MissingFiles.cpp.
    void findMissing();
    bool isTold(int query, const FileIdentity &file, const Volume &volume);
    bool isAt(int query, const QByteArray &path, const FileIdentity &file);
    void search(MissingGroup &group);
    bool searchNear(MissingGroup &group);
    QList<QByteArray> lookInto(InodeSearch &search, const Volume &volume,
                               const QList<QByteArray> &folders, QSet<QByteArray> &seen) const;
    QList<QByteArray> likelyFolders(const MissingGroup &group) const;
    QList<QByteArray> renamedInPlace(const QByteArray &missing) const;

    BookmarkParts &m_parts;
    BookmarkMemo &m_memo;
    const Bookmarks::Bound m_bound;
    const Clock::time_point m_deadline; // Of a brief check, and for network mounts.
    const std::shared_ptr<const Mounts> m_mounts;
    const TrashFolders m_trash;
    const bool m_hasAnswers; // Of searches outside.
    QList<BookmarkAnswer> m_answers;
    QList<QByteArray> m_openFolders; // Local folders of entries.
    QHash<QByteArray, QList<RemoteLooks::Task>> m_remote; // By mount point.
    QList<std::shared_ptr<RemoteLooks::Job>> m_jobs;
    QHash<quint64, quint64> m_remoteSystems; // Their own numbers, by device.
    QList<int> m_missing; // Queries.
    QSet<int> m_uncovered; // On network mounts: what is near was not read.
};
