#pragma once

#include "platform/linux/InodeSearch.h"
#include "platform/linux/Volumes.h"

#include <QByteArray>
#include <QList>

#include <atomic>
#include <memory>

/// Searches that were too long for a check. Each runs on a thread of its own at
/// the lowest priority, at most one on a file system at a time, and what it found
/// is kept for the next check. One that came to its limits is not followed by
/// another one for a while. Any thread.
class OutsideSearches
{
public:
    OutsideSearches(InodeSearch::Limits limits, double restSeconds);
    /// Tells the searches to end and does not wait for it.
    ~OutsideSearches();
    OutsideSearches(const OutsideSearches &) = delete;
    OutsideSearches &operator=(const OutsideSearches &) = delete;

    struct Answer
    {
        enum class State {
            Unknown,
            Found, // Was at `path`.
            Absent, // The whole file system was searched.
        };
        State state = State::Unknown;
        QByteArray path;
    };
    Answer answerFor(const FileIdentity &file) const;
    void forget(const FileIdentity &file);

    /// Neither does a search run there, nor has one just come to its limits.
    bool isIdle(dev_t device) const;
    /// Begins a search, where the file system is idle.
    void start(const Volume &volume, const QList<QByteArray> &first,
               const QList<FileIdentity> &wanted);
    /// True for the first time that this is asked of a file on a file system that
    /// is not idle: nobody needs to look near it again and again.
    bool isNew(const FileIdentity &file);

    /// Set when the program is about to end.
    const std::atomic<bool> &cancelled() const;

private:
    struct Shared;
    static void search(const std::shared_ptr<Shared> &shared, const Volume &volume,
                       const QList<QByteArray> &first, QList<FileIdentity> wanted);

    std::shared_ptr<Shared> m_shared;
};
