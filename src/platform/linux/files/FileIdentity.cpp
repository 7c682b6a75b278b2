#include "platform/linux/files/FileIdentity.h"

#include <QHashFunctions>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

size_t qHash(const FileIdentity &identity, size_t seed) noexcept
{
    return qHashMulti(seed, quint64(identity.device), quint64(identity.inode),
                      qint64(identity.birthSeconds), identity.birthNanoseconds);
}

FileLook lookAt(const QByteArray &path)
{
    return lookAt(AT_FDCWD, path.constData());
}

FileLook lookAt(int folder, const char *name)
{
    using State = FileLook::State;
    struct statx found = {};
    constexpr int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
    constexpr unsigned wanted = STATX_TYPE | STATX_INO | STATX_BTIME;
    if (::statx(folder, name, flags, wanted, &found) != 0) {
        const bool missing = errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG;
        return { missing ? State::Missing : State::Unknown, {}, false };
    }
    FileLook look = { State::Present, {}, S_ISDIR(found.stx_mode) };
    look.identity.device = makedev(found.stx_dev_major, found.stx_dev_minor);
    look.identity.inode = found.stx_ino;
    if ((found.stx_mask & STATX_BTIME) != 0) {
        look.identity.birthSeconds = found.stx_btime.tv_sec;
        look.identity.birthNanoseconds = found.stx_btime.tv_nsec;
        look.identity.hasBirth = true;
    }
    return look;
}
