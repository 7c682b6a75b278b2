#include "platform/linux/files/LocalFolder.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"

#include <array>
#include <cerrno>
#include <climits>

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
    m_descriptor = static_cast<int>(::syscall(SYS_openat2, inside ? above->m_descriptor : AT_FDCWD,
                                              path.constData() + (inside ? slash + 1 : 0), &how,
                                              sizeof how));
    m_state = m_descriptor >= 0 ? State::Open : stateOfError(errno);
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

bool LocalFolder::isBare() const
{
    return m_state != State::Open || NativeFile::namesIn(m_path).isEmpty();
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
