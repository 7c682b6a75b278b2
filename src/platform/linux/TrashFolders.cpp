#include "platform/linux/TrashFolders.h"

#include "base/FilePath.h"

#include <unistd.h>

bool TrashFolders::hold(const QByteArray &path, const QByteArray &homeTrash, const Mounts &mounts)
{
    if (!homeTrash.isEmpty() && path.startsWith(homeTrash) && FilePath::isBelow(path, homeTrash))
        return true;
    if (!path.contains("/.Trash"))
        return false;
    const Mount *mount = mounts.of(path);
    const QByteArray top = mount == nullptr || mount->point == "/" ? QByteArray() : mount->point;
    const QByteArray user = QByteArray::number(::getuid());
    return FilePath::isBelow(path, top + "/.Trash/" + user)
        || FilePath::isBelow(path, top + "/.Trash-" + user);
}
