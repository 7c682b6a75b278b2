#include "platform/linux/files/Volumes.h"

#include "platform/linux/files/LocalFolder.h"

#include "base/Descriptor.h"
#include "base/FilePath.h"

#include <algorithm>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace {

/// FAT and most of FUSE make the numbers up as they go. Of overlays only some kinds
/// lie, and these do so about a folder's own number as well, which a walk sees.
bool hasLastingNumbers(const QByteArray &type)
{
    constexpr const char *honest[]
        = { "ext2", "ext3", "ext4", "xfs", "btrfs", "f2fs", "tmpfs", "bcachefs", "overlay", "zfs" };
    return std::ranges::any_of(honest, [&](const char *name) { return type == name; });
}

bool hasSubvolumes(const Mount &mount)
{
    return mount.type == "btrfs" || mount.type == "bcachefs";
}

/// The whole file system if it is mounted somewhere; before it the mount through
/// which the user had the file, so that it is found under the name they know.
QList<QByteArray> rootsAmong(const QList<const Mount *> &mounts, const Mount *own)
{
    QList<QByteArray> roots;
    if (mounts.contains(own))
        roots.append(own->point);
    const auto whole
        = std::ranges::find_if(mounts, [](const Mount *mount) { return mount->root == "/"; });
    if (!roots.isEmpty() && own->root == "/")
        return roots;
    if (whole != mounts.cend())
        return roots += (*whole)->point;
    for (const Mount *mount : mounts) {
        if (mount != own)
            roots.append(mount->point);
    }
    return roots;
}

}

Volumes::Volumes(const Mounts &mounts)
    : m_mounts(mounts)
{
    for (const Mount &mount : mounts.all()) {
        if (mounts.of(mount.point) == &mount)
            m_seen.emplace_back(
                &mount, mount.remote ? Numbers { mount.device, 0 } : numbersAt(mount.point));
    }
}

std::optional<Volume> Volumes::find(const BookmarkRecord &record)
{
    // What `among` and `subvolume` depend on.
    const Mount *own = m_mounts.of(record.path);
    QByteArray key = QByteArray::number(quint64(record.identity.device)) + ' '
        + QByteArray::number(record.fileSystem) + ' ';
    const bool divided = own != nullptr && hasSubvolumes(*own);
    key += divided ? FilePath::parent(record.path) : (own != nullptr ? own->point : QByteArray());
    const auto known = m_known.constFind(key);
    if (known != m_known.cend())
        return *known;
    auto volume = among(record);
    if (!volume && divided)
        volume = subvolume(record);
    return *m_known.insert(key, volume);
}

std::optional<Volume> Volumes::among(const BookmarkRecord &record) const
{
    QList<const Mount *> byDevice;
    QList<const Mount *> byFileSystem;
    dev_t renumbered = 0;
    for (const auto &[mount, numbers] : m_seen) {
        const Match found = match(record, numbers);
        if (found == Match::ByDevice)
            byDevice.append(mount);
        if (found != Match::ByFileSystem)
            continue;
        byFileSystem.append(mount);
        // In an overlay files have the numbers of hidden file systems.
        renumbered = mount->type == "overlay" ? record.identity.device : numbers.device;
    }
    const QList<const Mount *> &mounts = byDevice.isEmpty() ? byFileSystem : byDevice;
    if (mounts.isEmpty())
        return std::nullopt;
    const Mount *own = m_mounts.of(record.path);
    const Mount *shown = mounts.contains(own) ? own : mounts[0];
    Volume volume;
    volume.device = byDevice.isEmpty() ? renumbered : record.identity.device;
    volume.remote = shown->remote;
    volume.walkable = !volume.remote && hasLastingNumbers(shown->type);
    volume.roots = rootsAmong(mounts, own);
    return volume;
}

/// A part of a file system with a device number of its own need not be mounted by
/// itself: the highest folder above the file that has it. Where there is none, it
/// may have been renamed itself and be anywhere among the others.
std::optional<Volume> Volumes::subvolume(const BookmarkRecord &record) const
{
    const Mount *own = m_mounts.of(record.path);
    Volume volume;
    volume.walkable = true;
    for (QByteArray path = FilePath::parent(record.path); path.size() > 1;
         path = FilePath::parent(path)) {
        const LocalFolder folder(path, m_mounts);
        if (folder.state() == LocalFolder::State::Missing)
            continue;
        const Numbers numbers = folder.state() == LocalFolder::State::Open
            ? numbersOf(folder.descriptor())
            : Numbers();
        if (volume.roots.isEmpty() ? match(record, numbers) == Match::None
                                   : numbers.device != volume.device)
            break;
        volume.device = numbers.device;
        volume.roots = { folder.realPath() };
    }
    if (volume.roots.isEmpty()) {
        volume.device = record.identity.device;
        volume.roots = { own->point };
        volume.subvolumes = InodeSearch::Subvolumes::Enter;
    }
    return volume;
}

Volumes::Numbers Volumes::numbersOf(int file)
{
    struct stat status = {};
    struct statfs system = {};
    if (::fstat(file, &status) != 0 || ::fstatfs(file, &system) != 0)
        return {};
    Numbers numbers { status.st_dev, 0 };
    static_assert(sizeof system.f_fsid == sizeof numbers.fileSystem);
    std::memcpy(&numbers.fileSystem, &system.f_fsid, sizeof numbers.fileSystem);
    return numbers;
}

Volumes::Numbers Volumes::numbersAt(const QByteArray &path)
{
    const Descriptor file(::open(path.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    return numbersOf(file.number());
}

Volumes::Match Volumes::match(const BookmarkRecord &record, const Numbers &numbers)
{
    const bool both = record.fileSystem != 0 && numbers.fileSystem != 0;
    if (both && record.fileSystem != numbers.fileSystem)
        return Match::None; // Another one has the device's number by now.
    if (record.identity.device == numbers.device)
        return Match::ByDevice;
    return both ? Match::ByFileSystem : Match::None;
}

quint64 Volumes::fileSystemOf(const QByteArray &path)
{
    return numbersAt(path).fileSystem;
}
