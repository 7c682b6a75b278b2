#include "store/ShelfStore.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "platform/Bookmarks.h"

#include <algorithm>
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

void ShelfStore::rename(const QUuid &id, const QString &name,
                        std::function<void(const QString &reason)> onFailure)
{
    Q_ASSERT(!name.isEmpty() && !name.contains(u'/'));
    const qsizetype index = itemIndex(id);
    if (index < 0)
        return;
    const QUrl before = items.value().at(index).url;
    const QByteArray from = FilePath::fromUrl(before);
    const QByteArray folder = FilePath::parent(from);
    const QByteArray to = (folder == "/" ? folder : folder + '/') + name.toUtf8();
    const auto kind
        = before.path().endsWith(u'/') ? FilePath::Kind::Directory : FilePath::Kind::File;
    m_workers.runAt(
        from,
        [this, &queue = m_queue, &bookmarks = m_bookmarks, alive = std::weak_ptr(m_alive), id,
         before, from, to, kind, onFailure = std::move(onFailure)] {
            const int failure = moveFile(from, to);
            const auto now
                = failure == 0 ? bookmarks.make(FilePath::toUrl(to, kind)) : Bookmarked();
            queue.post([this, alive, id, before, now, failure, onFailure] {
                if (!alive.lock())
                    return;
                if (failure == 0)
                    applyRename(id, before, now);
                else if (onFailure)
                    onFailure(failure == EEXIST ? m_texts.text(QStringLiteral("rename_exists"))
                                                : qt_error_string(failure));
            });
        });
}

/// The entry may be on another shelf by then, or wait to be brought back. One that
/// has another address by now was followed by a check.
void ShelfStore::applyRename(const QUuid &id, const QUrl &before, const Bookmarked &now)
{
    const auto apply = [&](ShelfItem &item) {
        if (item.id != id || item.url != before)
            return false;
        item.url = now.url;
        item.bookmark = now.bookmark;
        return true;
    };
    auto here = items.value();
    if (std::any_of(here.begin(), here.end(), apply)) {
        commit(std::move(here));
        return;
    }
    for (auto *list : { &shelves, &closed }) {
        auto next = list->value();
        if (std::any_of(next.begin(), next.end(), [&](Shelf &shelf) {
                return std::any_of(shelf.items.begin(), shelf.items.end(), apply);
            })) {
            list->set(std::move(next));
            save();
            return;
        }
    }
    for (auto &[index, item] : m_lastRemoved)
        apply(item);
}
