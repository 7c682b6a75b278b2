#include "StorePair.h"

#include <fstream>

#include <fcntl.h>

namespace {

struct Check
{
    const char *what;
    bool holds;
};

std::string firstBroken(std::initializer_list<Check> checks)
{
    const auto broken = std::find_if(checks.begin(), checks.end(),
                                     [](const Check &check) { return !check.holds; });
    return broken == checks.end() ? "" : broken->what;
}

}

StorePair::StorePair(World &home)
    : world(home)
{
    for (const char *name : { "shelves.json", "shelves-damaged.json", "dropped" })
        NativeFile::remove(world.data(name));
    for (int place = 0; place < ModelState::userPlaces; ++place) {
        addPlace(world.home() + "/user" + QByteArray::number(place));
        deleteFile(place);
        if (place < 4)
            createFile(place);
    }
    world.queue.advance(100); // The timers of earlier stores.
    tellBookmarks();
    model.now = world.queue.now();
    model.uptime = world.queue.uptime();
    restart(ModelStore::StateFile::Whole);
}

void StorePair::restart(ModelStore::StateFile file)
{
    store.reset();
    m_workers.held.clear();
    world.sounds.played.clear();
    if (file == ModelStore::StateFile::Unreadable)
        std::ofstream(m_statePath.constData()) << "{";
    if (file == ModelStore::StateFile::Cleared)
        NativeFile::remove(world.data("shelves-damaged.json"));
    m_file = fileIdentity();
    store.emplace(world.paths(), world.queue, m_workers, world.bookmarks, world.sounds,
                  world.pictures, m_texts);
    const auto count = [this](const auto &) { ++m_changes; };
    m_subscriptions = { store->items.subscribe(count, Deliver::ChangesOnly),
                        store->shelves.subscribe(count, Deliver::ChangesOnly),
                        store->closed.subscribe(count, Deliver::ChangesOnly) };
    store->onRemoved = [this](const QList<ShelfItem> &items) { m_removed += items; };
    store->onRestored = [this](const QList<ShelfItem> &items) { m_restored += items; };
    model.restart(file);
    if (model.effects.saved)
        m_file = {}; // Written, or already as it should be: it is compared in either case.
    learn(model.shelves, store->shelves.value());
}

void StorePair::runJob(int number)
{
    if (m_workers.held.empty())
        return;
    const int index = number % int(m_workers.held.size());
    const auto work = m_workers.held[index];
    m_workers.held.erase(m_workers.held.begin() + index);
    work();
    model.runJob(index);
    learnFiles();
}

void StorePair::toggleUpload(int entry)
{
    const QUuid key = id(entry);
    const bool begins = model.uploading.insert(entry).second;
    auto uploading = store->uploading.value();
    auto progress = store->progress.value();
    if (begins) {
        uploading.insert(key);
        progress.insert(key, 0.5);
        store->uploadCancels.insert(key, [this, entry] { m_cancelled.insert(entry); });
    } else {
        model.uploading.erase(entry);
        uploading.remove(key);
        progress.remove(key);
        store->uploadCancels.remove(key);
    }
    store->uploading.set(uploading);
    store->progress.set(progress);
}

void StorePair::createFile(int place)
{
    model.disk.present.insert(place);
    ::close(::open(m_paths.at(place).constData(), O_CREAT | O_CLOEXEC, 0600));
}

void StorePair::deleteFile(int place)
{
    model.disk.present.erase(place);
    ::unlink(m_paths.at(place).constData());
}

void StorePair::moveFile(int from, int to)
{
    if (!model.exists(from) || model.exists(to))
        return;
    EXPECT_EQ(std::rename(m_paths.at(from).constData(), m_paths.at(to).constData()), 0);
    model.disk.present.erase(from);
    model.disk.present.insert(to);
    model.disk.moved.insert({ from, from });
    for (auto &[made, now] : model.disk.moved)
        now = now == from ? to : now;
}

void StorePair::tellBookmarks()
{
    const auto &disk = model.disk;
    FakeBookmarks told;
    for (const auto &[made, now] : disk.moved)
        told.moved.insert(m_paths.at(made), m_paths.at(now));
    for (const int place : disk.trash)
        told.trash.insert(m_paths.at(place));
    for (const int place : disk.silent)
        told.silent.insert(m_paths.at(place));
    for (const int place : disk.searching) {
        if (!model.exists(place))
            told.searching.insert(m_paths.at(place));
    }
    world.bookmarks = told;
}

std::string StorePair::difference()
{
    const auto file = fileIdentity();
    const bool saved = std::exchange(m_file, file) != file;
    std::string found = firstBroken({ { "whether it was saved", saved == model.effects.saved },
                                      { "announced without need", saved || m_changes == 0 } });
    const bool touched = saved || m_present != model.disk.present;
    for (const std::string &other :
         { touched ? differenceOfFiles() : "", saved ? differenceOfState() : "",
           differenceOfSelection(), differenceOfEffects() })
        found = found.empty() ? other : found;
    world.sounds.played.clear();
    m_removed.clear();
    m_restored.clear();
    m_cancelled.clear();
    sameReturned = true;
    m_changes = 0;
    model.effects = {};
    return found;
}

std::string StorePair::differenceOfUsersFiles() const
{
    for (int place = 0; place < ModelState::userPlaces; ++place) {
        if (FilePath::exists(m_paths.at(place)) != model.exists(place))
            return "files of the user";
    }
    return "";
}

void StorePair::addPlace(const QByteArray &path)
{
    m_places.insert(path);
    m_paths.push_back(path);
    m_urls.push_back(FilePath::toUrl(path));
}

void StorePair::learn(const ModelState::Shelves &wanted, const QList<Shelf> &list)
{
    const auto assign = [this](std::vector<QUuid> &ids, int number, const QUuid &id) {
        ids.resize(std::max<size_t>(ids.size(), number + 1));
        if (ids[number].isNull() && m_known.insert(id).second)
            ids[number] = id;
    };
    for (int i = 0; i < std::min(int(wanted.size()), int(list.size())); ++i) {
        assign(m_shelves, wanted[i].number, list[i].id);
        const int count = int(wanted[i].items.size());
        for (int row = 0; row < std::min(count, int(list[i].items.size())); ++row)
            assign(m_entries, wanted[i].items[row].number, list[i].items[row].id);
    }
}

ShelfItem StorePair::item(const ModelState::Entry &entry) const
{
    ShelfItem item;
    item.id = id(entry.number);
    item.url = url(entry.place);
    item.addedAt = entry.addedAt;
    if (entry.bookmark != none)
        item.bookmark = FakeBookmarks::bookmarkOf(m_paths.at(entry.bookmark));
    if (!entry.preview.empty())
        item.preview = QString::fromStdString(entry.preview);
    if (!entry.link.empty())
        item.link = WebAddress::typed(QString::fromStdString(entry.link));
    return item;
}

QList<Shelf> StorePair::shelves(const ModelState::Shelves &list) const
{
    QList<Shelf> result;
    for (const ModelState::Shelf &shelf : list) {
        Shelf made { shelfId(shelf.number), {}, shelf.pinned, {}, shelf.closedAt };
        if (shelf.name)
            made.name = QString::fromStdString(*shelf.name);
        for (const ModelState::Entry &entry : shelf.items)
            made.items.append(item(entry));
        result.append(made);
    }
    return result;
}

QSet<QByteArray> StorePair::learnFiles()
{
    QSet<QByteArray> present;
    for (const QByteArray &name : NativeFile::namesIn(m_dropped)) {
        const QByteArray path = m_dropped + '/' + name;
        present.insert(path);
        if (!m_places.contains(path))
            addPlace(path);
    }
    return present;
}

std::string StorePair::differenceOfFiles()
{
    m_present = model.disk.present;
    const auto present = learnFiles();
    if (int(m_paths.size()) != model.placeCount)
        return "number of files written";
    QSet<QByteArray> wanted;
    for (const int place : model.disk.present) {
        if (place >= ModelState::userPlaces)
            wanted.insert(m_paths[place]);
    }
    return present == wanted ? "" : "files of the store";
}

std::string StorePair::differenceOfState()
{
    const ShelfState memory { store->currentID.value(), store->shelves.value(),
                              store->closed.value() };
    learn(model.shelves, memory.shelves);
    learn(model.closed, memory.closed);
    const ShelfState wanted { shelfId(model.current), shelves(model.shelves),
                              shelves(model.closed) };
    const auto current = store->currentShelf();
    std::string found
        = firstBroken({ { "current shelf", memory.current == wanted.current },
                        { "open shelves", memory.shelves == wanted.shelves },
                        { "closed shelves", memory.closed == wanted.closed },
                        { "items", current && current->items == store->items.value() },
                        { "state file", world.savedState() == memory } });
    if (!found.empty())
        found += "\n" + StateCoding::encode(memory).toStdString() + "\nwanted\n"
            + StateCoding::encode(wanted).toStdString();
    return found;
}

std::pair<quint64, qint64> StorePair::fileIdentity() const
{
    struct stat information = {};
    if (::stat(m_statePath.constData(), &information) != 0)
        return {};
    return { information.st_ino, information.st_ctim.tv_nsec };
}

std::string StorePair::differenceOfSelection()
{
    const auto carried = store->dragURLs();
    const auto dragged = model.dragged();
    QList<Address> urls;
    for (const auto &entry : dragged.value_or(ModelState::Entries()))
        urls.append(item(entry).target());
    const auto focus = store->focus.value();
    return firstBroken(
        { { "selection", store->selection.value() == ids(model.selection) },
          { "focus", focus == (model.focus ? std::optional(id(*model.focus)) : std::nullopt) },
          { "drag", carried == (dragged ? std::optional(urls) : std::nullopt) } });
}

std::string StorePair::differenceOfEffects()
{
    std::string sounds;
    for (const Sound sound : world.sounds.played)
        sounds += sound == Sound::Pop ? 'P' : sound == Sound::Tink ? 'T' : '?';
    const auto areEntries = [this](const QList<ShelfItem> &items, const std::vector<int> &wanted) {
        return std::equal(items.begin(), items.end(), wanted.begin(), wanted.end(),
                          [this](const auto &item, int entry) { return item.id == id(entry); });
    };
    const auto notice = store->notice.value().value_or(ShelfNotice());
    const auto progress = store->progress.value().keys();
    const auto cancels = store->uploadCancels.keys();
    const auto uploading = ids(model.uploading);
    return firstBroken(
        { { "returned value", sameReturned },
          { "sounds", sounds == model.effects.sounds },
          { "notice", notice.text.toStdString() == model.notice && notice.id == model.notices },
          { "removed", areEntries(m_removed, model.effects.removed) },
          { "restored", areEntries(m_restored, model.effects.restored) },
          { "cancelled", m_cancelled == model.effects.cancelled },
          { "uploading", store->uploading.value() == uploading },
          { "progress", QSet<QUuid>(progress.begin(), progress.end()) == uploading },
          { "cancels", QSet<QUuid>(cancels.begin(), cancels.end()) == uploading },
          { "jobs", int(m_workers.held.size()) == model.jobCount() } });
}
