#include "base/NativeFile.h"

#include "base/FilePath.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace {

constexpr mode_t usersOnly = 0700; // What the base directory specification asks for.
constexpr mode_t usersFile = 0600;
constexpr mode_t othersBits = 0077;

/// Repeats a call that a signal interrupted.
template<typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

std::optional<QByteArray> readAll(int file)
{
    QByteArray bytes;
    std::array<char, 65536> buffer {};
    for (;;) {
        const ssize_t count
            = uninterrupted([&] { return ::read(file, buffer.data(), buffer.size()); });
        if (count == 0)
            return bytes;
        if (count < 0 || bytes.size() + count > NativeFile::largest)
            return {};
        bytes.append(buffer.data(), count);
    }
}

bool writeAll(int file, const QByteArray &bytes)
{
    const char *next = bytes.constData();
    auto left = static_cast<size_t>(bytes.size());
    while (left > 0) {
        const ssize_t count = uninterrupted([&] { return ::write(file, next, left); });
        if (count < 0)
            return false;
        next += count;
        left -= static_cast<size_t>(count);
    }
    return true;
}

/// None of a symbolic link, but for those above it.
int openFolder(int above, const QByteArray &name)
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    return uninterrupted([&] { return ::openat(above, name.constData(), flags); });
}

/// Closes the stream; there may be none.
QList<QByteArray> namesOf(DIR *stream)
{
    QList<QByteArray> names;
    if (stream == nullptr)
        return names;
    while (const dirent *entry = ::readdir(stream)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    ::closedir(stream);
    return names;
}

// Folders deeper than there are handles stay. NOLINTNEXTLINE(misc-no-recursion)
void removeAt(int above, const QByteArray &name)
{
    if (::unlinkat(above, name.constData(), 0) == 0 || (errno != EISDIR && errno != EPERM))
        return;
    const int folder = openFolder(above, name);
    if (folder < 0)
        return;
    for (const QByteArray &each : namesOf(::fdopendir(::fcntl(folder, F_DUPFD_CLOEXEC, 0))))
        removeAt(folder, each);
    ::close(folder);
    ::unlinkat(above, name.constData(), AT_REMOVEDIR);
}

}

Descriptor NativeFile::open(const QByteArray &path)
{
    // Without O_NONBLOCK, opening a pipe would wait for its writer.
    Descriptor file(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (!file || (::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode)))
        return file;
    file = Descriptor();
    errno = EINVAL;
    return file;
}

NativeFile::Content NativeFile::read(const QByteArray &path)
{
    const Descriptor file = open(path);
    if (!file)
        return { {}, errno == ENOENT || errno == ENOTDIR ? Failure::Missing : Failure::Unreadable };
    return { readAll(file.number()), Failure::Unreadable };
}

bool NativeFile::writeNew(const QByteArray &path, const QByteArray &bytes)
{
    const QByteArray folder = FilePath::parent(path);
    makeFolder(folder);
    const int file = create(path);
    if (file < 0)
        return false;
    if (!writeAndClose(file, { bytes })) {
        const int reason = errno;
        ::unlink(path.constData());
        errno = reason;
        return false;
    }
    syncFolder(folder);
    return true;
}

int NativeFile::create(const QByteArray &path)
{
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    return uninterrupted([&] { return ::open(path.constData(), flags, usersFile); });
}

bool NativeFile::writeAndClose(int file, const QByteArrayList &pieces)
{
    const bool written = std::all_of(pieces.begin(), pieces.end(),
                                     [&](const QByteArray &piece) { return writeAll(file, piece); })
        && uninterrupted([&] { return ::fsync(file); }) == 0;
    const int reason = errno;
    // A full network file system may tell only now. Interrupted, it is closed all the same.
    const bool closed = ::close(file) == 0 || errno == EINTR;
    if (!written)
        errno = reason;
    return written && closed;
}

bool NativeFile::makeFolder(const QByteArray &path)
{
    if (::mkdir(path.constData(), usersOnly) == 0)
        return true;
    const auto slash = path.lastIndexOf('/');
    if (errno == ENOENT && slash > 0) {
        if (!makeFolder(path.left(slash)))
            return false;
        if (::mkdir(path.constData(), usersOnly) == 0)
            return true;
    }
    int reason = errno;
    struct stat status
    {
    };
    if (::stat(path.constData(), &status) == 0) {
        if (S_ISDIR(status.st_mode))
            return true;
        reason = ENOTDIR;
    }
    errno = reason;
    return false;
}

bool NativeFile::makePrivateFolder(const QByteArray &path)
{
    if (!makeFolder(path))
        return false;
    struct stat status
    {
    };
    if (::lstat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode)
        && (status.st_mode & othersBits) != 0)
        ::chmod(path.constData(), status.st_mode & usersOnly);
    return true;
}

void NativeFile::syncFolder(const QByteArray &folder)
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const int handle = uninterrupted([&] { return ::open(folder.constData(), flags); });
    if (handle < 0)
        return;
    uninterrupted([&] { return ::fsync(handle); });
    ::close(handle);
}

QList<QByteArray> NativeFile::namesIn(const QByteArray &folder)
{
    return namesOf(::opendir(folder.constData()));
}

void NativeFile::remove(const QByteArray &path)
{
    removeAt(AT_FDCWD, path);
}

void NativeFile::removeBelow(const QByteArray &folder, const QByteArray &relative)
{
    // Handles instead of paths, so that nobody can put a link on the way meanwhile.
    int place = openFolder(AT_FDCWD, folder);
    QByteArrayList parts = relative.split('/');
    const QByteArray last = parts.takeLast();
    for (const QByteArray &part : std::as_const(parts)) {
        const int inner = place < 0 ? -1 : openFolder(place, part);
        if (place >= 0)
            ::close(place);
        place = inner;
    }
    if (place < 0)
        return;
    removeAt(place, last);
    ::close(place);
}
