#include "platform/linux/LocalFolder.h"

#include "base/FilePath.h"

#include <array>
#include <cerrno>
#include <climits>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int mostLinks = 40; // As the kernel has it.

LocalFolder::State stateOfError(int error)
{
    const bool missing = error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
    return missing ? LocalFolder::State::Missing : LocalFolder::State::Unknown;
}

}

LocalFolder::LocalFolder(const QByteArray &path, const Mounts &mounts)
    : m_path(path)
{
    if (mounts.isRemote(path)) {
        m_state = State::Remote;
        return;
    }
    m_state = open(RESOLVE_NO_SYMLINKS);
    if (m_state != State::Unknown)
        return;
    // A link in it, or a kernel or a container that does not know the call.
    m_state = followLinks(mounts);
    if (m_state != State::Open)
        return;
    m_descriptor
        = ::open(m_path.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
    if (m_descriptor < 0)
        m_state = stateOfError(errno);
}

LocalFolder::~LocalFolder()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

QList<QByteArray> LocalFolder::folders(qsizetype limit) const
{
    QList<QByteArray> names;
    const int readable
        = ::openat(m_descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
    DIR *const stream = readable < 0 ? nullptr : ::fdopendir(readable);
    if (!stream && readable >= 0)
        ::close(readable);
    while (const dirent *const entry = stream ? ::readdir(stream) : nullptr) {
        const QByteArray name(entry->d_name);
        const bool folder = entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN;
        if (folder && name != "." && name != "..")
            names.append(name);
        if (names.size() >= limit)
            break;
    }
    if (stream)
        ::closedir(stream);
    return names;
}

LocalFolder::State LocalFolder::open(quint64 resolve)
{
    open_how how = {};
    how.flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    how.resolve = resolve;
    m_descriptor
        = static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, m_path.constData(), &how, sizeof how));
    return m_descriptor >= 0 ? State::Open : stateOfError(errno);
}

/// One component after the other, each file system asked about only after the
/// table of mounts has said that it is a local one.
LocalFolder::State LocalFolder::followLinks(const Mounts &mounts)
{
    QByteArray rest = m_path;
    QByteArray real;
    int links = 0;
    std::array<char, PATH_MAX> target = {};
    while (!rest.isEmpty()) {
        const qsizetype slash = rest.indexOf('/');
        const QByteArray part = rest.left(slash < 0 ? rest.size() : slash);
        rest = slash < 0 ? QByteArray() : rest.mid(slash + 1);
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..") {
            real.truncate(qMax<qsizetype>(0, real.lastIndexOf('/')));
            continue;
        }
        const QByteArray next = real + '/' + part;
        if (mounts.isRemote(next)) {
            m_path = FilePath::standardized(next + '/' + rest);
            return State::Remote;
        }
        const ssize_t size = ::readlink(next.constData(), target.data(), target.size());
        if (size < 0 && errno != EINVAL)
            return stateOfError(errno);
        if (size < 0) {
            real = next;
            continue;
        }
        if (++links > mostLinks)
            return State::Unknown;
        if (target[0] == '/')
            real.clear();
        rest = QByteArray(target.data(), size) + '/' + rest;
    }
    m_path = real.isEmpty() ? QByteArray("/") : real;
    return State::Open;
}
