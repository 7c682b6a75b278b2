#include "platform/linux/Volumes.h"

#include "platform/linux/LocalFolder.h"

#include "base/FilePath.h"

#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

struct Numbers
{
    dev_t device = 0;
    quint64 fileSystem = 0;
};

Numbers numbersOf(int file)
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

Numbers numbersAt(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0)
        return {};
    const Numbers numbers = numbersOf(file);
    ::close(file);
    return numbers;
}

enum class Match { None, ByFileSystem, ByDevice };

Match match(const BookmarkRecord &record, const Numbers &numbers)
{
    const bool both = record.fileSystem != 0 && numbers.fileSystem != 0;
    if (both && record.fileSystem != numbers.fileSystem)
        return Match::None; // Another one has the device's number by now.
    if (record.identity.device == numbers.device)
        return Match::ByDevice;
    return both ? Match::ByFileSystem : Match::None;
}

/// The whole file system if it is mounted somewhere; before it the mount through
/// which the user had the file, so that it is found under the name they know.
QList<QByteArray> rootsAmong(const QList<const Mount *> &mounts, const Mount *own)
{
    QList<QByteArray> roots;
    if (mounts.contains(own))
        roots.append(own->point);
    for (const Mount *mount : mounts) {
        if (mount->root == "/" && !roots.contains(mount->point)) {
            roots.append(mount->point);
            return roots;
        }
        if (mount == own && mount->root == "/")
            return roots;
    }
    for (const Mount *mount : mounts) {
        if (!roots.contains(mount->point))
            roots.append(mount->point);
    }
    return roots;
}

/// A part of a file system with a device number of its own (a subvolume) need
/// not be mounted by itself: the highest folder above the file that has it.
std::optional<Volume> above(const BookmarkRecord &record, const Mounts &mounts)
{
    QByteArray path = record.path;
    std::optional<Volume> volume;
    while (path.size() > 1) {
        path = FilePath::parent(path);
        const LocalFolder folder(path, mounts);
        if (folder.state() == LocalFolder::State::Missing)
            continue;
        if (folder.state() != LocalFolder::State::Open)
            return volume;
        const Numbers numbers = numbersOf(folder.descriptor());
        if (volume ? numbers.device != volume->device : match(record, numbers) == Match::None)
            return volume;
        volume = Volume { numbers.device, false, { folder.realPath() } };
    }
    return volume;
}

}

std::optional<Volume> Volumes::find(const BookmarkRecord &record, const Mounts &mounts)
{
    QList<const Mount *> byDevice;
    QList<const Mount *> byFileSystem;
    dev_t renumbered = 0;
    for (const Mount &mount : mounts.all()) {
        if (mounts.of(mount.point) != &mount)
            continue; // Hidden by another one.
        const Numbers numbers = mount.remote ? Numbers { mount.device, 0 } : numbersAt(mount.point);
        const Match found = match(record, numbers);
        if (found == Match::ByDevice)
            byDevice.append(&mount);
        if (found != Match::ByFileSystem)
            continue;
        byFileSystem.append(&mount);
        // In an overlay files have the numbers of hidden file systems.
        renumbered = mount.type == "overlay" ? record.identity.device : numbers.device;
    }
    const Mount *own = mounts.of(record.path);
    if (!byDevice.isEmpty())
        return Volume { record.identity.device, byDevice[0]->remote, rootsAmong(byDevice, own) };
    if (!byFileSystem.isEmpty())
        return Volume { renumbered, false, rootsAmong(byFileSystem, own) };
    return above(record, mounts);
}

quint64 Volumes::fileSystemOf(const QByteArray &path)
{
    return numbersAt(path).fileSystem;
}

quint64 FileSystemNumbers::of(dev_t device, const QByteArray &path, const Mounts &mounts)
{
    const std::lock_guard lock(m_mutex);
    if (m_mounts != mounts.number())
        m_numbers.clear();
    m_mounts = mounts.number();
    const auto known = m_numbers.constFind(device);
    return known != m_numbers.cend() ? *known
                                     : *m_numbers.insert(device, Volumes::fileSystemOf(path));
}
