#pragma once

#include "platform/linux/FileIdentity.h"

#include <QByteArray>
#include <QList>

#include <atomic>
#include <utility>

/// One walk of one file system for several files at once. It compares the
/// numbers that stand in the folders themselves and asks for a file's status
/// only where a number fits.
class InodeSearch
{
public:
    struct Limits
    {
        double seconds;
        qint64 entries;
        int threads;
    };
    struct Result
    {
        QList<std::pair<FileIdentity, QByteArray>> found;
        bool whole = false; // A wanted file that is not in `found` is nowhere below the root.
        qint64 entries = 0; // That were read, those read twice included.
        double seconds = 0;
    };

    /// Looks into the folders `first`, without what is below them, then walks everything below
    /// `root` but other mounts, symbolic links and subvolumes. Ends as soon as all are found, at a
    /// limit, or when another thread sets `cancelled`. A file without a birth time is never found.
    /// The paths start with the root's real one.
    ///
    /// The walk is whole when no limit ended it, no folder that may hold user's files refused to be
    /// read, and the file system's numbers can be trusted. A file that is moved meanwhile does not
    /// escape a whole walk unless it is moved again during the second look at its end.
    static Result run(const QByteArray &root, const QList<QByteArray> &first,
                      const QList<FileIdentity> &wanted, Limits limits,
                      const std::atomic<bool> &cancelled);
};
