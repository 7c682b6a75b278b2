#pragma once

#include "platform/linux/files/InodeSearch.h"
#include "platform/linux/files/Volumes.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>

/// Walks of whole file systems, which are too long for a check. Each runs on a
/// thread of its own at a low priority, at most one on a file system at a time,
/// and what it found out is kept for the next checks. Any thread.
class OutsideSearches : public std::enable_shared_from_this<OutsideSearches>
{
public:
    /// A file is absent when two walks, so many seconds apart, have not seen it: one alone may miss
    /// a file that is moved meanwhile.
    OutsideSearches(InodeSearch::Limits limits, double secondsApart)
        : m_limits(limits)
        , m_apart(secondsApart)
    {
    }

    struct Answer
    {
        enum class State {
            Unknown,
            Found, // Was at `path`; whatever was mounted since, a look there tells.
            Absent, // The whole file system was searched, twice.
            Undecided, // It cannot be searched whole; not tried again while its mounts are the
                       // same.
        };
        State state = State::Unknown;
        QByteArray path;
    };
    /// That a file is not there holds only for what is mounted of the volume's now, and as long as
    /// nothing has come to light where another mount was.
    Answer answerFor(const FileIdentity &file, const Volume &volume, const Mounts &mounts);
    bool hasAnswers();
    void forget(const FileIdentity &file);

    /// Begins a search, in the folders `first`, if none runs on the file system.
    void start(const Volume &volume, const std::shared_ptr<const Mounts> &mounts,
               const QList<FileIdentity> &wanted, const QList<QByteArray> &first);

    /// Tells these searches, and those within checks, to end, and does not wait for it.
    void cancel() { m_cancelled = true; }
    const std::atomic<bool> &cancelled() const { return m_cancelled; }

private:
    /// What the walks of one search have read.
    struct Walked
    {
        bool holdsFor(const Volume &volume, const Mounts &now);

        QList<QByteArray> roots;
        QList<QByteArray> covered; // By other mounts.
        quint64 mounts = 0; // The number of those with which they were last compared.
        bool holds = true;
    };
    struct Kept
    {
        Answer answer;
        std::chrono::steady_clock::time_point until;
        std::shared_ptr<Walked> walked;
    };
    void search(const Volume &volume, const Mounts &mounts, QList<FileIdentity> wanted,
                const QList<QByteArray> &first);

    const InodeSearch::Limits m_limits;
    const std::chrono::duration<double> m_apart;
    std::atomic<bool> m_cancelled = false;
    std::mutex m_mutex;
    QSet<quint64> m_running; // By device.
    QHash<FileIdentity, Kept> m_kept;
};
