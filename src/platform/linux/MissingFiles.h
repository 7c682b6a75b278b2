#pragma once

#include "platform/Bookmarks.h"
#include "platform/linux/BookmarkParts.h"
#include "platform/linux/TrashFolders.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

/// Looks for the files of one check that are not where they were: where the
/// kernel told of a rename, where a search outside has seen them, then in the
/// trash, in the folders at hand, and for a folder that is gone in its neighbours.
class MissingFiles
{
public:
    using Clock = std::chrono::steady_clock;
    struct Wanted
    {
        BookmarkRecord record;
        QByteArray path; // Where nothing is now.
        bool covered = true; // On a network mount: its folder and trash were read.
    };
    struct Outcome
    {
        BookmarkAnswer::Outcome state = BookmarkAnswer::Outcome::Missing;
        QByteArray path; // Where it was found, and what the look at it told.
        FileLook look;
    };

    /// A brief check ends at the deadline. `folders` are those of all entries.
    MissingFiles(BookmarkParts &parts, std::shared_ptr<const Mounts> mounts,
                 const TrashFolders &trash, Bookmarks::Bound bound, Clock::time_point deadline,
                 QList<QByteArray> folders);

    /// One outcome for each.
    QList<Outcome> find(const QList<Wanted> &wanted);

private:
    /// The missing files of one file system, by their identity now.
    struct Group
    {
        Volume volume;
        QList<std::pair<int, FileIdentity>> files; // Index in the outcomes.
    };
    std::optional<Outcome> withoutSearch(const Wanted &wanted, const FileIdentity &file,
                                         const Volume &volume);
    std::optional<Outcome> foundAt(const QByteArray &path, const FileIdentity &file) const;
    void search(Group &group, const QList<Wanted> &wanted, QList<Outcome> &outcomes);
    bool searchNear(Group &group, const QList<Wanted> &wanted, QList<Outcome> &outcomes);
    bool lookNear(InodeSearch &search, const Volume &volume, const QList<QByteArray> &own);
    bool lookInto(InodeSearch &search, const Volume &volume, const QByteArray &path);

    BookmarkParts &m_parts;
    const std::shared_ptr<const Mounts> m_mounts;
    const TrashFolders &m_trash;
    const Bookmarks::Bound m_bound;
    const Clock::time_point m_deadline;
    const QList<QByteArray> m_folders;
};
