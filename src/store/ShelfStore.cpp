#include "store/ShelfStore.h"

#include "base/AtomicFile.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "store/StateCoding.h"

#include <algorithm>
#include <cstdio>

namespace {

const QByteArray damagedName = QByteArrayLiteral("shelves-damaged.json");

}

ShelfStore::ShelfStore(AppPaths paths, MainQueue &queue, Workers &workers, Bookmarks &bookmarks,
                       Sounds &sounds, PictureDecoder &pictures, const Localizer &texts)
    : currentID(QUuid::createUuid())
    , m_paths(std::move(paths))
    , m_queue(queue)
    , m_workers(workers)
    , m_bookmarks(bookmarks)
    , m_sounds(sounds)
    , m_pictures(pictures)
    , m_texts(texts)
{
    NativeFile::makePrivateFolder(m_paths.dataDir);
    if (load() == Loaded::State)
        sweepOrphans();
}

ShelfStore::~ShelfStore() = default;

/// None, too, for a state without an open shelf. Whatever there is then may be the
/// only copy of what the user had.
std::optional<ShelfState> ShelfStore::readState(QByteArray &bytes)
{
    const auto content = NativeFile::read(m_paths.dataDir + "/shelves.json");
    bytes = content.bytes.value_or(QByteArray());
    auto state = StateCoding::decodeState(bytes);
    if (state && !state->shelves.isEmpty())
        return state;
    m_isDamaged = content.bytes || content.failure != NativeFile::Failure::Missing;
    return std::nullopt;
}

ShelfStore::Loaded ShelfStore::load()
{
    QByteArray onDisk;
    if (auto state = readState(onDisk)) {
        for (auto *list : { &state->shelves, &state->closed }) {
            for (Shelf &shelf : *list)
                shelf.items = rehome(std::move(shelf.items));
        }
        Locating::keepLocated(m_bookmarks, state->shelves);
        adopt(std::move(state->shelves), std::move(state->closed), state->current);
        // Most starts change nothing, and a disk that is waited for holds up the start.
        m_isSaved = encoded().join() == onDisk || save();
        return Loaded::State;
    }
    const QByteArray oldPath = m_paths.dataDir + "/items.json";
    const auto oldItems
        = StateCoding::decodeItems(NativeFile::read(oldPath).bytes.value_or(QByteArray()));
    QList<Shelf> only(1);
    only.first().id = QUuid::createUuid();
    if (oldItems)
        only.first().items = rehome(*oldItems);
    Locating::keepLocated(m_bookmarks, only);
    adopt(std::move(only), {}, {});
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

QByteArrayList ShelfStore::encoded()
{
    mirrorCurrent();
    return m_encoder.encode({ currentID.value(), shelves.value(), closed.value() });
}

bool ShelfStore::save()
{
    NativeFile::makeFolder(m_paths.dataDir); // It may have been removed, or not been there to make.
    const QByteArray path = m_paths.dataDir + "/shelves.json";
    if (m_isDamaged)
        m_isDamaged = !AtomicFile::setAside(path, damagedName);
    m_isSaved = !m_isDamaged && AtomicFile::write(path, encoded());
    return m_isSaved;
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
    // These may name files that no shelf names any more.
    if (FilePath::exists(AtomicFile::besideTarget(m_paths.dataDir + "/shelves.json", damagedName))
        || FilePath::exists(m_paths.dataDir + "/items.json"))
        return;
    const auto names = NativeFile::namesIn(droppedDir());
    if (names.isEmpty())
        return;
    QSet<QByteArray> used;
    QList<QByteArray> lost; // Bookmarks of files that are there no more, or under another name.
    for (const auto *list : { &shelves.value(), &closed.value() }) {
        for (const Shelf &shelf : *list) {
            for (const ShelfItem &item : shelf.items) {
                const QByteArray path = FilePath::standardized(FilePath::fromUrl(item.url));
                if (item.bookmark && isManaged(item.url) && !FilePath::exists(path))
                    lost.append(*item.bookmark);
                used.insert(FilePath::lastComponent(path));
            }
        }
    }
    for (const QByteArray &name : names) {
        const QUrl url = FilePath::toUrl(droppedDir() + '/' + name);
        const auto isOf = [&](const auto &mark) { return m_bookmarks.mayBeOf(mark, url); };
        if (!used.contains(name) && std::none_of(lost.begin(), lost.end(), isOf))
            NativeFile::removeBelow(droppedDir(), name);
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

/// To be called once the state without these entries is saved: a state on disk
/// never names a file that was deleted. Where saving fails, the files stay for
/// the sweep of a later start.
void ShelfStore::discardManaged(const QList<ShelfItem> &list) const
{
    if (!m_isSaved)
        return;
    for (const ShelfItem &item : list) {
        // The standardised path, since the place was judged by it.
        const QByteArray path = FilePath::standardized(FilePath::fromUrl(item.url));
        if (isManaged(item.url))
            NativeFile::removeBelow(droppedDir(),
                                    path.mid(FilePath::standardized(droppedDir()).size() + 1));
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
