#pragma once

#include "base/Descriptor.h"

#include <QByteArray>
#include <QHash>

#include <memory>
#include <mutex>
#include <vector>

#include <sys/types.h>

struct Mount
{
    dev_t device = 0;
    QByteArray root; // What of the file system is mounted; "/" for the whole of it.
    QByteArray point;
    QByteArray type;
    /// A server, another program or the network answers for it, maybe never.
    bool remote = false;
};

/// One reading of the table of mounts.
class Mounts
{
public:
    Mounts() = default;
    /// The text of /proc/self/mountinfo; what cannot be understood is left out.
    Mounts(const QByteArray &table, quint64 number);

    quint64 number() const { return m_number; } // Another one after each change.
    const std::vector<Mount> &all() const { return m_mounts; }
    /// The one with the longest mount point, links in the path not followed. Null
    /// only where the table cannot be read.
    const Mount *of(const QByteArray &path) const;
    bool isRemote(const QByteArray &path) const;
    /// Whether something is mounted right there, and a remote one.
    bool isPoint(const QByteArray &path) const { return m_byPoint.contains(path); }
    bool isRemotePoint(const QByteArray &path) const { return isPoint(path) && isRemote(path); }

private:
    std::vector<Mount> m_mounts;
    QHash<QByteArray, int> m_byPoint;
    quint64 m_number = 0;
};

/// The mounts as they are now. Reads its table again only after the kernel has
/// announced a change. Any thread.
class MountTable
{
public:
    explicit MountTable(QByteArray path);

    std::shared_ptr<const Mounts> current();

private:
    QByteArray m_path;
    std::mutex m_mutex;
    Descriptor m_file;
    std::shared_ptr<const Mounts> m_mounts;
};
