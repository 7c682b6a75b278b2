#include "platform/linux/files/PlainFile.h"

#include <QtGlobal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int PlainFile::open(const QByteArray &path)
{
    const int file = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status = {};
    if (file < 0 || (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)))
        return file;
    ::close(file);
    return -1;
}

QByteArray PlainFile::version(const struct stat &status)
{
    const qint64 parts[] = { static_cast<qint64>(status.st_dev), static_cast<qint64>(status.st_ino),
                             status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec };
    return { reinterpret_cast<const char *>(parts), sizeof parts };
}
