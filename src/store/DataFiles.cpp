#include "store/DataFiles.h"

#include "base/FilePath.h"

#include <cerrno>
#include <filesystem>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// A file descriptor that closes itself.
class Descriptor
{
public:
    Descriptor(const QByteArray &path, int flags, mode_t mode = 0)
        : m_number(open(path.constData(), flags | O_CLOEXEC, mode))
    {
    }
    ~Descriptor() { close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    bool isOpen() const { return m_number >= 0; }
    int number() const { return m_number; }
    /// Network file systems report a failed write only here.
    bool close()
    {
        const int number = std::exchange(m_number, -1);
        return number < 0 || ::close(number) == 0;
    }

private:
    int m_number;
};

bool writeAll(int descriptor, const QByteArray &bytes)
{
    const char *next = bytes.constData();
    auto left = static_cast<size_t>(bytes.size());
    while (left > 0) {
        const ssize_t written = ::write(descriptor, next, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        next += written;
        left -= static_cast<size_t>(written);
    }
    return true;
}

}

std::optional<QByteArray> DataFiles::read(const QByteArray &path)
{
    // Without O_NONBLOCK, opening a FIFO would wait for its writer.
    const Descriptor file(path, O_RDONLY | O_NONBLOCK);
    struct stat information = {};
    if (!file.isOpen() || fstat(file.number(), &information) != 0 || !S_ISREG(information.st_mode))
        return std::nullopt;
    QByteArray bytes;
    bytes.reserve(information.st_size);
    char buffer[65536];
    for (;;) {
        const ssize_t size = ::read(file.number(), buffer, sizeof buffer);
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            return std::nullopt;
        if (size == 0)
            return bytes;
        bytes.append(buffer, size);
    }
}

bool DataFiles::writeNew(const QByteArray &path, const QByteArray &bytes)
{
    makeFolder(FilePath::parent(path));
    unlink(path.constData());
    Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL, 0666);
    if (!file.isOpen())
        return false;
    if (writeAll(file.number(), bytes) && fsync(file.number()) == 0 && file.close())
        return true;
    unlink(path.constData());
    return false;
}

void DataFiles::makeFolder(const QByteArray &path)
{
    if (mkdir(path.constData(), 0700) == 0 || errno != ENOENT || path == FilePath::parent(path))
        return;
    makeFolder(FilePath::parent(path));
    mkdir(path.constData(), 0700);
}

QList<QByteArray> DataFiles::namesIn(const QByteArray &folder)
{
    QList<QByteArray> names;
    DIR *stream = opendir(folder.constData());
    if (!stream)
        return names;
    while (const dirent *entry = readdir(stream)) {
        const QByteArray name(entry->d_name);
        if (name != "." && name != "..")
            names.append(name);
    }
    closedir(stream);
    return names;
}

void DataFiles::remove(const QByteArray &path)
{
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::path(path.toStdString()), ignored);
}
