#include "platform/linux/NativeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

constexpr off_t largest = 16 << 20; // Bytes.
constexpr mode_t usersOnly = 0700; // What the base directory specification asks for.

std::optional<QByteArray> readAll(int file, qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    qsizetype done = 0;
    while (done < size) {
        const ssize_t count = ::read(file, bytes.data() + done, static_cast<size_t>(size - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return {};
        if (count == 0)
            break; // It shrank meanwhile.
        done += count;
    }
    bytes.truncate(done);
    return bytes;
}

}

NativeFile::Content NativeFile::read(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0)
        return { {}, errno == ENOENT || errno == ENOTDIR ? Failure::Missing : Failure::Unreadable };
    Content content { {}, Failure::Unreadable };
    struct stat status {};
    if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= largest)
        content.bytes = readAll(file, status.st_size);
    ::close(file);
    return content;
}

bool NativeFile::makeFolder(const QByteArray &path)
{
    if (::mkdir(path.constData(), usersOnly) == 0)
        return true;
    const auto slash = path.lastIndexOf('/');
    if (errno == ENOENT && slash > 0)
        return makeFolder(path.left(slash)) && ::mkdir(path.constData(), usersOnly) == 0;
    if (errno != EEXIST)
        return false;
    struct stat status {};
    if (::stat(path.constData(), &status) != 0)
        return false;
    errno = ENOTDIR;
    return S_ISDIR(status.st_mode);
}
