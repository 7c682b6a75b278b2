#pragma once

#include "platform/linux/BookmarkCoding.h"
#include "platform/linux/MountTable.h"

#include <QHash>
#include <QList>

#include <mutex>
#include <optional>

/// The mounted file system that a file was on.
struct Volume
{
    dev_t device = 0; // Its files' number now.
    bool remote = false;
    QList<QByteArray> roots; // Folders below which all of it that is mounted lies.
};

namespace Volumes {

/// Recognised by its device's number or, after a restart has changed that, by
/// the file system's own. None where it is not mounted.
std::optional<Volume> find(const BookmarkRecord &record, const Mounts &mounts);

/// The file system's own number; 0 where it has none.
quint64 fileSystemOf(const QByteArray &path);

}

/// Remembers fileSystemOf for each device. Any thread.
class FileSystemNumbers
{
public:
    quint64 of(dev_t device, const QByteArray &path, const Mounts &mounts);

private:
    std::mutex m_mutex;
    quint64 m_mounts = 0; // Numbers of devices are given out again.
    QHash<quint64, quint64> m_numbers;
};
