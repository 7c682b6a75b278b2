#include "base/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

constexpr int longestLinkChain = 40; // As the kernel has it.
constexpr mode_t permissionBits = 07777;

QByteArray folderOf(const QByteArray &path)
{
    const auto slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

bool writeAll(int file, const QByteArray &bytes)
{
    const char *next = bytes.constData();
    auto left = static_cast<size_t>(bytes.size());
    while (left > 0) {
        const ssize_t count = ::write(file, next, left);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        next += count;
        left -= static_cast<size_t>(count);
    }
    return true;
}

/// Without it the rename itself may be lost in a power cut. Some file systems
/// cannot do it; the file is complete in any case.
void syncFolder(const QByteArray &folder)
{
    const int handle = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return;
    ::fsync(handle);
    ::close(handle);
}

/// Writes into the open temporary file and closes it, whatever happens.
bool fill(int file, const QByteArray &bytes, std::optional<mode_t> mode)
{
    bool done = writeAll(file, bytes) && (!mode || ::fchmod(file, *mode) == 0)
        && ::fsync(file) == 0;
    const int reason = errno;
    // A full network file system may tell only now.
    const bool closed = ::close(file) == 0;
    if (done && !closed)
        return false;
    errno = reason;
    return done;
}

}

QByteArray AtomicFile::linkTarget(const QByteArray &path)
{
    QByteArray current = path;
    for (int i = 0; i < longestLinkChain; ++i) {
        std::array<char, PATH_MAX> buffer {};
        const ssize_t length = ::readlink(current.constData(), buffer.data(), buffer.size());
        if (length < 0)
            return current;
        const QByteArray target(buffer.data(), length);
        current = target.startsWith('/') ? target : folderOf(current) + '/' + target;
    }
    return {};
}

bool AtomicFile::write(const QByteArray &path, const QByteArray &bytes)
{
    const QByteArray target = linkTarget(path);
    if (target.isEmpty()) {
        errno = ELOOP;
        return false;
    }
    struct stat old {};
    std::optional<mode_t> mode;
    if (::stat(target.constData(), &old) == 0) {
        if (!S_ISREG(old.st_mode)) {
            errno = S_ISDIR(old.st_mode) ? EISDIR : EINVAL;
            return false;
        }
        mode = old.st_mode & permissionBits;
    }

    const QByteArray folder = folderOf(target);
    QByteArray temporary = folder + "/.vantle-XXXXXX";
    const int file = ::mkostemp(temporary.data(), O_CLOEXEC); // Mode 0600.
    if (file < 0)
        return false;
    if (fill(file, bytes, mode) && ::rename(temporary.constData(), target.constData()) == 0) {
        syncFolder(folder);
        return true;
    }
    const int reason = errno;
    ::unlink(temporary.constData());
    errno = reason;
    return false;
}
