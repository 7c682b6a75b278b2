#pragma once

#include "platform/linux/files/BookmarkCoding.h"
#include "platform/linux/files/InodeSearch.h"
#include "platform/linux/files/MountTable.h"

#include <QHash>
#include <QList>

#include <optional>
#include <utility>
#include <vector>

/// The mounted file system that a file was on.
struct Volume
{
    dev_t device = 0; // Its files' number now.
    bool remote = false;
    bool walkable = false; // The numbers in its folders are those of the files, and stay theirs.
    InodeSearch::Subvolumes subvolumes = InodeSearch::Subvolumes::Skip;
    QList<QByteArray> roots; // Folders below which all of it that is mounted lies.
};

/// The mounted file systems, each looked at once. For one check.
class Volumes
{
public:
    explicit Volumes(const Mounts &mounts);

    /// Recognised by its device's number or, after a restart has changed that, by
    /// the file system's own. None where it is not mounted.
    std::optional<Volume> find(const BookmarkRecord &record);

    /// The file system's own number; 0 where it has none.
    static quint64 fileSystemOf(const QByteArray &path);

private:
    struct Numbers
    {
        dev_t device = 0;
        quint64 fileSystem = 0;
    };
    enum class Match { None, ByFileSystem, ByDevice };
    static Numbers numbersOf(int file);
    static Numbers numbersAt(const QByteArray &path);
    static Match match(const BookmarkRecord &record, const Numbers &numbers);
    std::optional<Volume> among(const BookmarkRecord &record) const;
    std::optional<Volume> subvolume(const BookmarkRecord &record) const;

    const Mounts &m_mounts;
    std::vector<std::pair<const Mount *, Numbers>> m_seen; // Not hidden by another one.
    QHash<QByteArray, std::optional<Volume>> m_known; // By what a record says of it.
};
