#include "platform/linux/files/MountTable.h"

#include "base/NativeFile.h"

#include <QList>

#include <glib.h>

#include <algorithm>

#include <fcntl.h>
#include <poll.h>
#include <sys/sysmacros.h>

namespace {

/// Space, tab, line feed and backslash are written as three octal digits.
QByteArray unescaped(const QByteArray &text)
{
    g_autofree char *plain = g_strcompress(text.constData());
    return plain;
}

bool isRemoteType(const QByteArray &type)
{
    constexpr const char *starts[]
        = { "9p",     "afs",   "autofs", "beegfs", "ceph",    "cifs",  "coda",
            "fuse",   "gfs2",  "lustre", "ncpfs",  "nfs",     "ocfs2", "orangefs",
            "prl_fs", "pvfs2", "smb",    "vboxsf", "virtiofs" };
    return std::ranges::any_of(starts, [&](const char *start) { return type.startsWith(start); });
}

}

Mounts::Mounts(const QByteArray &table, quint64 number)
    : m_number(number)
{
    for (const QByteArray &line : table.split('\n')) {
        // number parent major:minor root point options [tags …] - type source options
        const QList<QByteArray> fields = line.split(' ');
        const auto dash = fields.indexOf("-", 6);
        if (dash < 0 || dash + 1 >= fields.size())
            continue;
        const QList<QByteArray> device = fields[2].split(':');
        Mount mount;
        mount.device = makedev(device.value(0).toUInt(), device.value(1).toUInt());
        mount.root = unescaped(fields[3]);
        mount.point = unescaped(fields[4]);
        mount.type = fields[dash + 1];
        mount.remote = isRemoteType(mount.type);
        // Of several on one point the last is the one that is seen.
        m_byPoint.insert(mount.point, static_cast<int>(m_mounts.size()));
        m_mounts.push_back(std::move(mount));
    }
}

const Mount *Mounts::of(const QByteArray &path) const
{
    for (qsizetype size = path.size(); size > 0; size = path.lastIndexOf('/', size - 1)) {
        const auto found = m_byPoint.constFind(QByteArray::fromRawData(path.constData(), size));
        if (found != m_byPoint.cend())
            return &m_mounts[static_cast<size_t>(*found)];
        if (size == 1)
            return nullptr;
    }
    const auto root = m_byPoint.constFind("/");
    return root == m_byPoint.cend() ? nullptr : &m_mounts[static_cast<size_t>(*root)];
}

bool Mounts::isRemote(const QByteArray &path) const
{
    const Mount *mount = of(path);
    return mount != nullptr && mount->remote;
}

MountTable::MountTable(QByteArray path)
    : m_path(std::move(path))
{
}

std::shared_ptr<const Mounts> MountTable::current()
{
    const std::lock_guard lock(m_mutex);
    const bool isFirst = !m_file;
    if (isFirst)
        m_file = Descriptor(::open(m_path.constData(), O_RDONLY | O_CLOEXEC));
    // The kernel says on each open file once that there was a change since.
    pollfd change { m_file.number(), POLLPRI, 0 };
    const bool changed
        = m_file && ::poll(&change, 1, 0) > 0 && (change.revents & (POLLPRI | POLLERR)) != 0;
    if (!m_mounts || changed || (isFirst && m_file))
        m_mounts
            = std::make_shared<const Mounts>(NativeFile::read(m_path).bytes.value_or(QByteArray()),
                                             m_mounts ? m_mounts->number() + 1 : 1);
    return m_mounts;
}
