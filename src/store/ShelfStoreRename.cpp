#include "store/ShelfStore.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "platform/Bookmarks.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace {

/// 0, or the reason as errno has it. Never replaces anything.
int moveFile(const QByteArray &from, const QByteArray &to)
{
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // This file system cannot look and move in one step.
    if (FilePath::exists(to))
        return EEXIST;
    return std::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

}

std::optional<QString> ShelfStore::rename(const QUuid &id, const QString &name)
{
    Q_ASSERT(!name.isEmpty() && !name.contains(u'/'));
    const qsizetype index = itemIndex(id);
    if (index < 0)
        return std::nullopt;
    const QByteArray from = FilePath::fromUrl(items.value().at(index).url);
    const QByteArray folder = FilePath::parent(from);
    const QByteArray to = (folder == "/" ? folder : folder + '/') + name.toUtf8();
    if (const int failure = moveFile(from, to))
        return failure == EEXIST ? m_texts.text(QStringLiteral("rename_exists"))
                                 : qt_error_string(failure);
    const bool directory = items.value().at(index).url.path().endsWith(u'/');
    const Bookmarked made = m_bookmarks.make(
        FilePath::toUrl(to, directory ? FilePath::Kind::Directory : FilePath::Kind::File));
    auto next = items.value();
    next[index].url = made.url;
    next[index].bookmark = made.bookmark;
    commit(std::move(next));
    return std::nullopt;
}
