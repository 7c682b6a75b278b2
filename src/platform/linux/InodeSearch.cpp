#include "platform/linux/InodeSearch.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr size_t bufferSize = 65536;

struct Descriptor
{
    explicit Descriptor(int n)
        : number(n)
    {
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor()
    {
        if (number >= 0)
            ::close(number);
    }
    const int number;
};

/// For reading, and not through a link at the end.
int openFolder(const char *path)
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    const int folder = ::open(path, flags | O_NOATIME);
    return folder < 0 && errno == EPERM ? ::open(path, flags) : folder; // Another user's.
}

/// Below an open folder and on the same mount. What was mounted after a walk began is thus
/// not even opened: a server that is gone would hold the walk up for ever.
int openFolderOnMount(int root, const char *path)
{
    // openat2(2), which has no wrapper; kernels before 5.6, and some sandboxes, have none.
    struct
    {
        quint64 flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOATIME;
        quint64 mode = 0;
        quint64 resolve = 1; // RESOLVE_NO_XDEV
    } how;
    auto folder = ::syscall(SYS_openat2, root, path, &how, sizeof how);
    if (folder < 0 && errno == EPERM) { // Another user's.
        how.flags &= ~quint64(O_NOATIME);
        folder = ::syscall(SYS_openat2, root, path, &how, sizeof how);
    }
    return folder < 0 && (errno == ENOSYS || errno == EPERM)
        ? ::openat(root, path, static_cast<int>(how.flags))
        : static_cast<int>(folder);
}

/// Whether a folder that could not be read may be one into which the user has moved something: one
/// that can be searched, and that the user may write to or that has folders in it.
bool mayHoldFiles(const char *path, int error)
{
    if (error == ENOENT || error == ENOTDIR || error == ELOOP || error == EXDEV)
        return false;
    struct stat status = {};
    constexpr nlink_t withoutFolders = 2; // Where links are counted: its name and its ".".
    return error != EACCES
        || (::faccessat(AT_FDCWD, path, X_OK, AT_EACCESS) == 0
            && (::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS) == 0 || ::lstat(path, &status) != 0
                || status.st_nlink != withoutFolders));
}

std::string childOf(const std::string &folder, std::string_view name)
{
    std::string path;
    path.reserve(folder.size() + name.size() + 1);
    path = folder;
    if (path.back() != '/')
        path += '/';
    return path += name;
}

}

InodeSearch::InodeSearch(const QList<FileIdentity> &wanted, Limits limits,
                         const std::atomic<bool> &cancelled)
    : m_limits(limits)
    , m_cancelled(cancelled)
    , m_buffer(bufferSize)
{
    QHash<FileIdentity, bool> known;
    for (const FileIdentity &identity : wanted) {
        if (!std::exchange(known[identity], true))
            m_wanted.push_back({ identity });
    }
    std::sort(m_wanted.begin(), m_wanted.end(),
              [](const Wanted &a, const Wanted &b) { return a.identity.inode < b.identity.inode; });
    m_missing = m_wanted.size();
}

bool InodeSearch::isOver()
{
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    m_limited = m_limited || m_entries >= m_limits.entries || time.count() >= m_limits.seconds
        || m_cancelled;
    return m_limited || m_missing == 0;
}

void InodeSearch::lookInto(const QByteArray &path)
{
    m_device = 0;
    const std::string folder = path.toStdString();
    if (!folder.empty() && !isOver())
        read(folder, openFolder(folder.c_str()), false);
}

void InodeSearch::walk(const QByteArray &root, const Mounts &mounts, Subvolumes subvolumes)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(root.constData(), nullptr),
                                                           &std::free);
    struct stat status = {};
    if (!real || ::lstat(real.get(), &status) != 0) {
        m_trusted = false;
        return;
    }
    m_device = status.st_dev;
    m_subvolumes = subvolumes;
    // What is mounted below is not even opened: that could mount what is mounted on demand, or wait
    // for a server that is gone.
    m_mounts.clear();
    for (const Mount &mount : mounts.all()) {
        if (mount.point != real.get())
            m_mounts.push_back(mount.point.toStdString());
    }
    std::sort(m_mounts.begin(), m_mounts.end());
    const Descriptor top(openFolder(real.get()));
    const std::string above(real.get());
    m_pending.assign(1, above);
    while (!m_pending.empty() && !isOver()) {
        const std::string path = std::move(m_pending.back());
        m_pending.pop_back();
        if (std::binary_search(m_mounts.begin(), m_mounts.end(), path))
            continue;
        if (path == above)
            read(path, openFolder(path.c_str()), true);
        else
            read(
                path,
                openFolderOnMount(top.number, path.c_str() + above.size() + (above == "/" ? 0 : 1)),
                true);
    }
}

void InodeSearch::read(const std::string &path, int opened, bool descend)
{
    const int error = errno; // Of the opening, where that failed.
    const Descriptor folder(opened);
    struct stat status = {};
    if (folder.number < 0)
        m_trusted = m_trusted && !mayHoldFiles(path.c_str(), error);
    else if (::fstat(folder.number, &status) == 0
             && (!descend || status.st_dev == m_device || m_subvolumes == Subvolumes::Enter))
        readEntries(path, folder.number, status.st_ino, descend);
}

void InodeSearch::readEntries(const std::string &path, int folder, ino_t number, bool descend)
{
    while (!isOver()) {
        const ssize_t size = ::getdents64(folder, m_buffer.data(), bufferSize);
        if (size < 0 && errno != ENOENT) // Removed while it was read.
            m_trusted = false;
        if (size <= 0)
            return;
        for (size_t at = 0; at < static_cast<size_t>(size);) {
            const auto &entry = *reinterpret_cast<const dirent64 *>(m_buffer.data() + at);
            const std::string_view name(entry.d_name);
            at += entry.d_reclen;
            if (name == "." && entry.d_ino != number)
                m_trusted = false; // An overlay whose names carry the numbers of its layers.
            if (name == "." || name == "..")
                continue;
            ++m_entries;
            const auto fits = firstWanted(entry.d_ino);
            if (fits != m_wanted.end() && fits->identity.inode == entry.d_ino)
                lookAtEntry(path, folder, entry.d_name);
            // A file of unknown type is tried as a folder.
            if (descend && (entry.d_type == DT_DIR || entry.d_type == DT_UNKNOWN))
                m_pending.push_back(childOf(path, name));
        }
    }
}

void InodeSearch::lookAtEntry(const std::string &path, int folder, const char *name)
{
    const FileLook look = lookAt(folder, name);
    if (look.state == FileLook::State::Unknown)
        m_trusted = false;
    if (look.state != FileLook::State::Present)
        return;
    for (auto at = firstWanted(look.identity.inode);
         at != m_wanted.end() && at->identity.inode == look.identity.inode; ++at) {
        if (!at->identity.hasBirth && at->identity.device == look.identity.device)
            m_trusted = false; // May be the one or its successor.
        else if (at->identity == look.identity && !std::exchange(at->found, true)) {
            m_found.insert(look.identity, QByteArray::fromStdString(childOf(path, name)));
            --m_missing;
        }
    }
}

std::vector<InodeSearch::Wanted>::iterator InodeSearch::firstWanted(ino_t number)
{
    return std::lower_bound(
        m_wanted.begin(), m_wanted.end(), number,
        [](const Wanted &wanted, ino_t n) { return wanted.identity.inode < n; });
}
