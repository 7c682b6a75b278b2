#include "platform/linux/files/LocalFolder.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"

#include <array>
#include <cerrno>
#include <climits>
#include <utility>

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

LocalFolder::LocalFolder(const QByteArray &path, const Mounts &mounts, const LocalFolder *above)
    : m_path(path)
{
    const qsizetype slash = path.lastIndexOf('/');
    const bool inside = above != nullptr && above->m_state == State::Open
        && QByteArrayView(path).first(slash) == above->m_path;
    if (inside ? mounts.isRemotePoint(path) : mounts.isRemote(path)) {
        m_state = State::Remote;
        return;
    }
    open_how how = {};
    how.flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS;
    m_descriptor = Descriptor(
        static_cast<int>(::syscall(SYS_openat2, inside ? above->descriptor() : AT_FDCWD,
                                   path.constData() + (inside ? slash + 1 : 0), &how, sizeof how)));
    m_state = m_descriptor ? State::Open : stateOfError(errno);
    if (m_state != State::Unknown)
        return;
    // A link in it, or a kernel or a container that does not know the call.
    m_state = followLinks(m_path, mounts);
    if (m_state != State::Open)
        return;
    m_descriptor = Descriptor(
        ::open(m_path.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
    if (!m_descriptor)
        m_state = stateOfError(errno);
}

bool LocalFolder::isBare() const
{
    return m_state != State::Open || NativeFile::namesIn(m_path).isEmpty();
}

/// One component after the other, each file system asked about only after the
/// table of mounts has said that it is a local one.
LocalFolder::State LocalFolder::followLinks(QByteArray &path, const Mounts &mounts)
{
    QByteArray rest = std::exchange(path, QByteArray());
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
        path = FilePath::standardized(next + '/' + rest);
        if (mounts.isRemote(next))
            return State::Remote;
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
    path = real.isEmpty() ? QByteArray("/") : real;
    return State::Open;
}
