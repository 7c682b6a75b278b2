#include "platform/linux/files/TrashFolders.h"

#include "platform/linux/files/LocalFolder.h"

#include "base/FilePath.h"

#include <algorithm>

#include <unistd.h>

TrashFolders::TrashFolders(const QByteArray &homeTrash, const Mounts &mounts)
    : m_mounts(mounts)
{
    if (homeTrash.isEmpty())
        return;
    m_home.append(homeTrash);
    const LocalFolder folder(homeTrash, mounts);
    if (folder.state() == LocalFolder::State::Open && folder.realPath() != homeTrash)
        m_home.append(folder.realPath());
}

bool TrashFolders::hold(const QByteArray &path) const
{
    const auto isIn = [&](const QByteArray &home) {
        return path.startsWith(home) && FilePath::isBelow(path, home);
    };
    if (std::ranges::any_of(m_home, isIn))
        return true;
    const qsizetype at = path.indexOf("/.Trash");
    if (at < 0)
        return false;
    const QByteArray folders = path + '/';
    if (folders.contains("/.Trash/") || folders.contains("/.Trashes/"))
        return true;
    const Mount *mount = m_mounts.of(path);
    const QByteArray top = mount == nullptr || mount->point == "/" ? QByteArray() : mount->point;
    return FilePath::isBelow(path, top + "/.Trash-" + QByteArray::number(::getuid()));
}

QList<QByteArray> TrashFolders::contents(const QList<QByteArray> &roots) const
{
    QList<QByteArray> result;
    for (const QByteArray &home : m_home)
        result.append(home + "/files");
    const QByteArray user = QByteArray::number(::getuid());
    for (const QByteArray &root : roots) {
        const QByteArray top = root == "/" ? QByteArray() : root;
        result.append(top + "/.Trash-" + user + "/files");
        result.append(top + "/.Trash/" + user + "/files");
    }
    return result;
}
