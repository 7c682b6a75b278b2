#include "platform/linux/FolderTree.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <fstream>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

/// The kernel takes no path of PATH_MAX bytes: all but the last part of such a
/// one is opened piece by piece.
Descriptor openStart(const std::string &path, size_t &rest)
{
    Descriptor base(AT_FDCWD);
    rest = 0;
    while (path.size() - rest >= PATH_MAX) {
        const size_t end = path.rfind('/', rest + PATH_MAX - 1);
        const std::string piece = path.substr(rest, end - rest);
        base = Descriptor(
            openat(base.number(), piece.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (base.number() < 0)
            break;
        rest = end + 1;
    }
    return base;
}

/// A folder that could not be read may be one into which the user cannot have
/// moved anything, or one that is no longer there.
bool mayHoldFiles(int base, const char *path, int error)
{
    if (error == ENOENT || error == ENOTDIR || error == ELOOP)
        return false;
    return error != EACCES || faccessat(base, path, X_OK, AT_EACCESS) == 0;
}

std::string unescaped(std::string_view field)
{
    std::string result;
    for (size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) { // Space, tab and the like: "\040".
            result += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8
                                        + (field[i + 3] - '0'));
            i += 3;
        } else {
            result += field[i];
        }
    }
    return result;
}

}

Descriptor::~Descriptor()
{
    if (m_number >= 0)
        close(m_number);
}

void writePath(const Folder &folder, std::string &path)
{
    size_t size = folder.name.size();
    for (const Folder *above = folder.parent; above != nullptr; above = above->parent)
        size += above->name.size() + 1;
    path.resize(size);
    for (const Folder *part = &folder; part != nullptr; part = part->parent) {
        size -= part->name.size();
        part->name.copy(path.data() + size, part->name.size());
        if (part->parent != nullptr)
            path[--size] = '/';
    }
    if (path.empty())
        path += '/';
}

OpenedFolder openFolder(const std::string &path)
{
    size_t rest = 0;
    const Descriptor base = openStart(path, rest);
    const char *const last = path.c_str() + rest;
    if (base.number() == -1)
        return { Descriptor(), mayHoldFiles(-1, "", errno) };
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    int number = openat(base.number(), last, flags | O_NOATIME);
    if (number < 0 && errno == EPERM) // Another user's folder.
        number = openat(base.number(), last, flags);
    if (number < 0)
        return { Descriptor(), mayHoldFiles(base.number(), last, errno) };
    return { Descriptor(number) };
}

std::vector<std::string> mountPointsBelow(const std::string &root)
{
    std::vector<std::string> result;
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        size_t start = 0;
        for (int field = 0; field < 4; ++field) // Two ids, the device and the mounted part.
            start = line.find(' ', start) + 1;
        const std::string path
            = unescaped(std::string_view(line).substr(start, line.find(' ', start) - start));
        if (path.size() > root.size() + 1 && path.starts_with(root) && path[root.size()] == '/')
            result.push_back(path);
    }
    std::sort(result.begin(), result.end());
    return result;
}

bool hasLastingNumbers(int folder)
{
    constexpr unsigned zfs = 0x2fc12fc1;
    constexpr unsigned bcachefs = 0xca451a4e;
    constexpr std::array<unsigned, 8> honest {
        EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC, zfs,
        bcachefs,         OVERLAYFS_SUPER_MAGIC, TMPFS_MAGIC,
    };
    struct statfs status = {};
    return fstatfs(folder, &status) == 0
        && std::find(honest.begin(), honest.end(), static_cast<unsigned>(status.f_type))
        != honest.end();
}
