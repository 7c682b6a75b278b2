#pragma once

#include "platform/Bookmarks.h"
#include "platform/linux/BookmarkParts.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

/// Looks for the files of one check that are not where they were.
class MissingFiles
{
public:
    using Clock = std::chrono::steady_clock;
    struct Wanted
    {
        BookmarkRecord record;
        QByteArray path; // Where nothing is now.
        quint32 links = 0; // When it was last seen; 0: not seen since the start.
    };
    struct Outcome
    {
        enum class State { Found, Gone, Searching };
        State state = State::Searching;
        QByteArray path; // Where it was found, and what the look at it told.
        FileLook look;
    };

    /// A brief check ends at the deadline. `folders` are those of all entries.
    MissingFiles(BookmarkParts &parts, const Mounts &mounts, Bookmarks::Bound bound,
                 Clock::time_point deadline, QList<QByteArray> folders);

    /// One outcome for each.
    QList<Outcome> find(const QList<Wanted> &wanted);

private:
    /// The missing files of one file system, by their identity now.
    struct Group
    {
        Volume volume;
        QList<std::pair<int, FileIdentity>> files; // Index in the outcomes.
    };
    std::optional<Outcome> withoutSearch(const Wanted &wanted);
    std::optional<Outcome> fromMemory(const Wanted &wanted);
    std::optional<Outcome> fromOutside(const FileIdentity &file, const Volume &volume);
    void search(Group &group, QList<Outcome> &outcomes);
    bool searchNear(Group &group, QList<Outcome> &outcomes);
    bool run(Group &group, InodeSearch::Limits limits, QList<Outcome> &outcomes);
    QList<QByteArray> foldersOn(const Volume &volume);
    std::optional<Outcome> foundAt(const QByteArray &path, const FileIdentity &file) const;

    BookmarkParts &m_parts;
    const Mounts &m_mounts;
    const Bookmarks::Bound m_bound;
    const Clock::time_point m_deadline;
    QList<QByteArray> m_folders;
};
