#pragma once

#include "platform/linux/files/FileIdentity.h"
#include "platform/linux/files/MountTable.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

/// Looks for several files at once by the numbers that stand in the folders
/// themselves, and asks for a file's status only where a number fits. A file
/// without a birth time is never found.
class InodeSearch
{
public:
    struct Limits
    {
        double seconds;
        qint64 entries;
    };
    enum class Subvolumes { Skip, Enter };

    /// Ends as soon as all are found, at a limit, or when another thread sets `cancelled`.
    InodeSearch(const QList<FileIdentity> &wanted, Limits limits,
                const std::atomic<bool> &cancelled);

    /// Reads one folder and nothing below it.
    void lookInto(const QByteArray &path);
    /// Everything below the root but other mounts, symbolic links and, unless they are entered,
    /// subvolumes. The paths start with the root's real one. What lies below the folders `first`,
    /// whose paths hold no links, is read before the rest.
    void walk(const QByteArray &root, const Mounts &mounts,
              Subvolumes subvolumes = Subvolumes::Skip, const QList<QByteArray> &first = {});

    const QHash<FileIdentity, QByteArray> &found() const { return m_found; }
    bool isOver();
    /// What is wanted and not found was in none of the folders that were read or walked, unless it
    /// was moved meanwhile: no limit ended the search, no folder that may hold files of the user's
    /// refused to be read, and no number was seen to lie.
    bool isWhole() const { return m_wanted.isEmpty() || (!m_limited && m_trusted); }
    qint64 entries() const { return m_entries; }
    /// The mount points at which walks turned back: what lies under them was not seen.
    const QList<QByteArray> &covered() const { return m_covered; }

private:
    void read(const std::string &path, int opened, bool descend);
    void lookAtEntry(const std::string &path, int folder, const char *name);

    const Limits m_limits;
    const std::atomic<bool> &m_cancelled;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    QMultiHash<ino_t, FileIdentity> m_wanted; // Not found so far, by number.
    bool m_limited = false;
    bool m_trusted = true;
    qint64 m_entries = 0;
    QHash<FileIdentity, QByteArray> m_found;

    dev_t m_device = 0; // Of the walk.
    Subvolumes m_subvolumes = Subvolumes::Skip;
    QList<QByteArray> m_covered;
    std::vector<std::string> m_pending; // The last one is read next, which keeps it short.
    std::vector<char> m_buffer;
};
