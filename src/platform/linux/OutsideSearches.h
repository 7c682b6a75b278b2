#pragma once

#include "platform/linux/InodeSearch.h"
#include "platform/linux/Volumes.h"

#include <QByteArray>
#include <QList>

#include <atomic>
#include <memory>

/// Walks of whole file systems, which are too long for a check. Each runs on a
/// thread of its own at the lowest priority, at most one on a file system at a
/// time, and what it found out is kept for the next checks. Any thread.
class OutsideSearches
{
public:
    /// A file is absent when two walks, so many seconds apart, have not seen it: one alone may miss
    /// a file that is moved meanwhile.
    OutsideSearches(InodeSearch::Limits limits, double secondsApart);
    ~OutsideSearches();
    OutsideSearches(const OutsideSearches &) = delete;
    OutsideSearches &operator=(const OutsideSearches &) = delete;

    struct Answer
    {
        enum class State {
            Unknown,
            Found, // Was at `path`.
            Absent, // The whole file system was searched, twice.
            Undecided, // It cannot be searched whole; not tried again while nothing changes.
        };
        State state = State::Unknown;
        QByteArray path;
    };
    Answer answerFor(const FileIdentity &file, const Mounts &mounts) const;
    void forget(const FileIdentity &file);

    /// Begins a search, if none runs on the file system.
    void start(const Volume &volume, const std::shared_ptr<const Mounts> &mounts,
               const QList<FileIdentity> &wanted);

    /// Tells these searches, and those within checks, to end, and does not wait for it.
    void cancel();
    const std::atomic<bool> &cancelled() const;

private:
    struct Shared;
    static void search(const std::shared_ptr<Shared> &shared, const Volume &volume,
                       const std::shared_ptr<const Mounts> &mounts, QList<FileIdentity> wanted);

    std::shared_ptr<Shared> m_shared;
};
