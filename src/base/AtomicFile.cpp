#include "base/AtomicFile.h"

#include "base/NativeFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
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

/// Beside the target, since only within a file system a rename is one step. One
/// name for each target: whatever a killed process leaves, the next write removes.
QByteArray temporaryFor(const QByteArray &target)
{
    const QByteArray ending = QByteArrayLiteral(".vantle-new");
    const QByteArray name = target.mid(target.lastIndexOf('/') + 1);
    return folderOf(target) + "/." + name.left(NAME_MAX - 1 - ending.size()) + ending;
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

QByteArray AtomicFile::besideTarget(const QByteArray &path, const QByteArray &name)
{
    return folderOf(linkTarget(path)) + '/' + name;
}

bool AtomicFile::setAside(const QByteArray &path, const QByteArray &name)
{
    const QByteArray place = besideTarget(path, name);
    return ::rename(linkTarget(path).constData(), place.constData()) == 0 || errno == ENOENT;
}

bool AtomicFile::write(const QByteArray &path, const QByteArray &bytes)
{
    return write(path, QByteArrayList { bytes });
}

bool AtomicFile::write(const QByteArray &path, const QByteArrayList &pieces)
{
    const QByteArray target = linkTarget(path);
    if (target.isEmpty()) {
        errno = ELOOP;
        return false;
    }
    struct stat old
    {
    };
    std::optional<mode_t> mode;
    if (::stat(target.constData(), &old) == 0) {
        if (!S_ISREG(old.st_mode)) {
            errno = S_ISDIR(old.st_mode) ? EISDIR : EINVAL;
            return false;
        }
        mode = old.st_mode & permissionBits;
    }

    qsizetype size = 0;
    for (const QByteArray &piece : pieces)
        size += piece.size();
    if (size > NativeFile::largest) { // It could not be read.
        errno = EFBIG;
        return false;
    }
    const QByteArray temporary = temporaryFor(target);
    ::unlink(temporary.constData());
    const int file = NativeFile::create(temporary);
    if (file < 0)
        return false;
    // File systems without permissions refuse; the content counts for more.
    if (mode)
        ::fchmod(file, *mode);
    if (NativeFile::writeAndClose(file, pieces)
        && ::rename(temporary.constData(), target.constData()) == 0) {
        NativeFile::syncFolder(folderOf(target));
        return true;
    }
    const int reason = errno;
    ::unlink(temporary.constData());
    errno = reason;
    return false;
}
