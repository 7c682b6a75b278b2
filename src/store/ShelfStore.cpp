#include "store/ShelfStore.h"

#include "base/AtomicFile.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "store/StateCoding.h"

#include <algorithm>
#include <cstdio>

#include <sys/stat.h>

namespace {

/// The entries whose file is still there. A file that cannot be asked for, in a
/// folder without permission for example, was not found missing.
QList<ShelfItem> located(const QList<ShelfItem> &list)
{
    QList<ShelfItem> present;
    present.reserve(list.size());
    std::copy_if(list.begin(), list.end(), std::back_inserter(present), [](const ShelfItem &item) {
        return FilePath::exists(FilePath::fromUrl(item.url));
    });
    return present;
}

/// Whether a folder between that one and the file is a symbolic link, which
/// would lead a removal out of the folder.
bool hasLinkBetween(const QByteArray &folder, const QByteArray &file)
{
    struct stat information = {};
    for (QByteArray path = FilePath::parent(file); FilePath::isBelow(path, folder);
         path = FilePath::parent(path)) {
        if (lstat(path.constData(), &information) == 0 && S_ISLNK(information.st_mode))
            return true;
    }
    return false;
}

}

ShelfStore::ShelfStore(AppPaths paths, MainQueue &queue, Workers &workers, Sounds &sounds,
                       const Localizer &texts)
    : currentID(QUuid::createUuid())
    , m_paths(std::move(paths))
    , m_queue(queue)
    , m_workers(workers)
    , m_sounds(sounds)
    , m_texts(texts)
{
    NativeFile::makeFolder(m_paths.dataDir);
    if (load() == Loaded::State)
        sweepOrphans();
}

ShelfStore::~ShelfStore() = default;

ShelfStore::Loaded ShelfStore::load()
{
    const auto state = StateCoding::decodeState(
        NativeFile::read(m_paths.dataDir + "/shelves.json").bytes.value_or(QByteArray()));
    if (state && !state->shelves.isEmpty()) {
        auto open = state->shelves;
        for (Shelf &shelf : open)
            shelf.items = located(rehome(shelf.items));
        auto closedShelves = state->closed;
        for (Shelf &shelf : closedShelves)
            shelf.items = rehome(shelf.items);
        adopt(std::move(open), std::move(closedShelves), state->current);
        save();
        return Loaded::State;
    }
    const QByteArray oldPath = m_paths.dataDir + "/items.json";
    const auto oldItems
        = StateCoding::decodeItems(NativeFile::read(oldPath).bytes.value_or(QByteArray()));
    Shelf only;
    only.id = QUuid::createUuid();
    if (oldItems)
        only.items = located(rehome(*oldItems));
    adopt({ only }, {}, only.id);
    if (!oldItems)
        return Loaded::Nothing;
    // The older file gives way only to a new one that is safely there.
    if (save())
        std::rename(oldPath.constData(), (m_paths.dataDir + "/items-v1-backup.json").constData());
    return Loaded::State;
}

void ShelfStore::adopt(QList<Shelf> open, QList<Shelf> closedShelves, const QUuid &current)
{
    shelves.set(std::move(open));
    closed.set(std::move(closedShelves));
    const qsizetype index = std::max<qsizetype>(shelfIndex(current), 0);
    currentID.set(shelves.value().at(index).id);
    items.set(shelves.value().at(index).items);
}

bool ShelfStore::save()
{
    mirrorCurrent();
    NativeFile::makeFolder(m_paths.dataDir); // It may have been removed, or not been there to make.
    const ShelfState state { currentID.value(), shelves.value(), closed.value() };
    return AtomicFile::write(m_paths.dataDir + "/shelves.json", StateCoding::encode(state));
}

void ShelfStore::mirrorCurrent()
{
    const qsizetype index = shelfIndex(currentID.value());
    if (index < 0 || shelves.value().at(index).items == items.value())
        return;
    auto next = shelves.value();
    next[index].items = items.value();
    shelves.set(std::move(next));
}

void ShelfStore::sweepOrphans() const
{
    QSet<QByteArray> used;
    for (const auto *list : { &shelves.value(), &closed.value() }) {
        for (const Shelf &shelf : *list) {
            for (const ShelfItem &item : shelf.items)
                used.insert(FilePath::lastComponent(FilePath::fromUrl(item.url)));
        }
    }
    for (const QByteArray &name : NativeFile::namesIn(droppedDir())) {
        if (!used.contains(name))
            NativeFile::remove(droppedDir() + '/' + name);
    }
}

QList<ShelfItem> ShelfStore::rehome(QList<ShelfItem> list) const
{
    for (ShelfItem &item : list) {
        const QByteArray path = FilePath::standardized(FilePath::fromUrl(item.url));
        if (!FilePath::isBelow(path, m_paths.oldDataDir))
            continue;
        const QByteArray rest = path.mid(FilePath::standardized(m_paths.oldDataDir).size());
        const bool directory = item.url.path().endsWith(QLatin1Char('/'));
        item.url = FilePath::toUrl(m_paths.dataDir + rest,
                                   directory ? FilePath::Kind::Directory : FilePath::Kind::File);
    }
    return list;
}

bool ShelfStore::isManaged(const QUrl &url) const
{
    return FilePath::isBelow(FilePath::fromUrl(url), droppedDir());
}

void ShelfStore::discardManaged(const QList<ShelfItem> &list) const
{
    for (const ShelfItem &item : list) {
        // The standardised path, since the place was judged by it.
        const QByteArray path = FilePath::standardized(FilePath::fromUrl(item.url));
        if (isManaged(item.url) && !hasLinkBetween(droppedDir(), path))
            NativeFile::remove(path);
    }
}

void ShelfStore::commit(QList<ShelfItem> next)
{
    items.set(std::move(next));
    mirrorCurrent();
    save();
}

void ShelfStore::publish(const QString &text)
{
    notice.set(ShelfNotice { ++m_noticeSeq, text });
}

qsizetype ShelfStore::itemIndex(const std::optional<QUuid> &id) const
{
    const auto &list = items.value();
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const ShelfItem &item) { return item.id == id; });
    return found == list.end() ? -1 : found - list.begin();
}

qsizetype ShelfStore::shelfIndex(const QUuid &id) const
{
    const auto &list = shelves.value();
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const Shelf &shelf) { return shelf.id == id; });
    return found == list.end() ? -1 : found - list.begin();
}
