#include "platform/linux/files/InodeSearch.h"

#include "base/Descriptor.h"
#include "base/FilePath.h"

#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr size_t bufferSize = 65536;

/// For reading, and not through a link at the end. Below a root that is open only on the same
/// mount: what was mounted after a walk began is thus not even opened, since a server that is gone
/// would hold the walk up for ever.
int openFolder(const char *path, int root = AT_FDCWD)
{
    open_how how = {};
    how.flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOATIME;
    how.resolve = root == AT_FDCWD ? 0 : RESOLVE_NO_XDEV;
    // No wrapper has it; kernels before 5.6, and some sandboxes, do not know it.
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
    if (error == ENOENT || error == ENOTDIR || error == ELOOP)
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
    for (const FileIdentity &identity : wanted) {
        if (!m_wanted.contains(identity.inode, identity))
            m_wanted.insert(identity.inode, identity);
    }
}

bool InodeSearch::isOver()
{
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
    m_limited = m_limited || m_entries >= m_limits.entries || time.count() >= m_limits.seconds
        || m_cancelled;
    return m_limited || m_wanted.isEmpty();
}

void InodeSearch::lookInto(const QByteArray &path)
{
    m_device = 0;
    const std::string folder = path.toStdString();
    if (!folder.empty() && !isOver())
        read(folder, openFolder(folder.c_str()), false);
}

void InodeSearch::walk(const QByteArray &root, const Mounts &mounts, Subvolumes subvolumes,
                       const QList<QByteArray> &first)
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
    const std::string top(real.get());
    const Descriptor opened(openFolder(real.get()));
    m_pending.assign(1, top);
    std::map<std::string, bool> early; // Whether they were read.
    for (auto folder = first.crbegin(); folder != first.crend(); ++folder) {
        if (FilePath::isBelow(*folder, real.get())
            && early.emplace(folder->toStdString(), false).second)
            m_pending.push_back(folder->toStdString());
    }
    while (!m_pending.empty() && !isOver()) {
        const std::string path = std::move(m_pending.back());
        m_pending.pop_back();
        const auto again = early.find(path);
        if (again != early.end() && std::exchange(again->second, true))
            continue;
        const size_t start = top.size() + (top == "/" ? 0 : 1);
        // What is mounted below is not even opened: that could mount what is mounted on demand, or
        // wait for a server that is gone.
        if (path == top)
            read(path, openFolder(path.c_str()), true);
        else if (mounts.isPoint(QByteArray::fromRawData(path.data(), qsizetype(path.size()))))
            m_covered.append(QByteArray::fromStdString(path));
        else
            read(path, openFolder(path.c_str() + start, opened.number()), true);
    }
}

void InodeSearch::read(const std::string &path, int opened, bool descend)
{
    const int error = errno; // Of the opening, where that failed.
    const Descriptor folder(opened);
    if (!folder && error == EXDEV)
        m_covered.append(QByteArray::fromStdString(path));
    else if (!folder)
        m_trusted = m_trusted && !mayHoldFiles(path.c_str(), error);
    struct stat status = {};
    if (!folder || ::fstat(folder.number(), &status) != 0
        || (descend && status.st_dev != m_device && m_subvolumes == Subvolumes::Skip))
        return;
    while (!isOver()) {
        const ssize_t size = ::getdents64(folder.number(), m_buffer.data(), bufferSize);
        if (size < 0 && errno != ENOENT) // Removed while it was read.
            m_trusted = false;
        if (size <= 0)
            return;
        for (size_t at = 0; at < static_cast<size_t>(size);) {
            const auto &entry = *reinterpret_cast<const dirent64 *>(m_buffer.data() + at);
            const std::string_view name(entry.d_name);
            at += entry.d_reclen;
            if (name == "." && entry.d_ino != status.st_ino)
                m_trusted = false; // An overlay whose names carry the numbers of its layers.
            if (name == "." || name == "..")
                continue;
            ++m_entries;
            if (m_wanted.contains(entry.d_ino))
                lookAtEntry(path, folder.number(), entry.d_name);
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
    for (auto at = m_wanted.find(look.identity.inode);
         at != m_wanted.end() && at.key() == look.identity.inode;) {
        const bool same = *at == look.identity && at->hasBirth;
        if (!at->hasBirth && at->device == look.identity.device)
            m_trusted = false; // May be the one or its successor.
        if (same)
            m_found.insert(look.identity, QByteArray::fromStdString(childOf(path, name)));
        at = same ? m_wanted.erase(at) : std::next(at);
    }
}
