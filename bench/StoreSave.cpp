// One operation of a store of 10,000 entries on 20 shelves, which ends with a
// save, beside the bare writing of the same bytes; and the start with that file.
// Prints a figure a line: name, value, unit.
#include "StoreHome.h"
#include "store/StateCoding.h"

namespace {

constexpr int shelfCount = 20;
constexpr int perShelf = 500;
constexpr int entryCount = shelfCount * perShelf;
constexpr int rounds = 200;
constexpr int starts = 15;

ShelfState fullState(StoreHome &home, const QList<QUrl> &files)
{
    ShelfState state;
    for (int i = 0; i < shelfCount; ++i) {
        Shelf shelf { QUuid::createUuid(), QStringLiteral("Shelf %1").arg(i + 1), false, {}, {} };
        for (const QUrl &url : files.mid(qsizetype(i) * perShelf, perShelf)) {
            ShelfItem item;
            item.id = QUuid::createUuid();
            item.url = url;
            item.addedAt = 785000000.123456 + i;
            item.bookmark = home.bookmarks.make(url).bookmark;
            shelf.items.append(item);
        }
        state.shelves.append(shelf);
    }
    state.current = state.shelves.first().id;
    return state;
}

/// What cannot be left out: the bytes on the disk, then the name, then the name on the disk.
bool writeBare(const QByteArray &folder, const QByteArray &bytes)
{
    const QByteArray from = folder + "/bare.new";
    const QByteArray to = folder + "/bare";
    const int file = ::open(from.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const auto size = static_cast<size_t>(bytes.size());
    bool good = ::write(file, bytes.constData(), size) == bytes.size() && ::fsync(file) == 0;
    ::close(file);
    good = good && ::rename(from.constData(), to.constData()) == 0;
    const int handle = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    good = good && ::fsync(handle) == 0;
    ::close(handle);
    return good;
}

void measureStarts(StoreHome &home)
{
    std::vector<double> times;
    std::vector<double> processor;
    for (int i = 0; i < starts; ++i) {
        const double before = seconds(CLOCK_THREAD_CPUTIME_ID);
        const double start = seconds(CLOCK_MONOTONIC);
        const auto store = home.newStore();
        times.push_back(seconds(CLOCK_MONOTONIC) - start);
        processor.push_back(seconds(CLOCK_THREAD_CPUTIME_ID) - before);
        if (store->items.value().size() != perShelf)
            std::printf("entries_lost %d entries\n", 1);
    }
    std::printf("load_median %.2f ms\n", quantile(times, 0.5) * 1e3);
    std::printf("load_processor_median %.2f ms\n", quantile(processor, 0.5) * 1e3);
    std::printf("load_95th %.2f ms\n", quantile(times, 0.95) * 1e3);
}

void measureSaves(StoreHome &home, const QList<QUrl> &more)
{
    const auto store = home.newStore();
    const QByteArray folder = FilePath::parent(home.stateFile());
    std::vector<double> saves;
    std::vector<double> bare;
    std::vector<double> processor;
    for (int i = 0; i < rounds; ++i) {
        const double before = seconds(CLOCK_THREAD_CPUTIME_ID);
        double start = seconds(CLOCK_MONOTONIC);
        store->add({ more.at(i) });
        saves.push_back(seconds(CLOCK_MONOTONIC) - start);
        processor.push_back(seconds(CLOCK_THREAD_CPUTIME_ID) - before);
        const QByteArray bytes = NativeFile::read(home.stateFile()).bytes.value_or(QByteArray());
        start = seconds(CLOCK_MONOTONIC);
        if (!writeBare(folder, bytes))
            std::perror("bare");
        bare.push_back(seconds(CLOCK_MONOTONIC) - start);
    }
    std::printf("save_median %.2f ms\n", quantile(saves, 0.5) * 1e3);
    std::printf("save_95th %.2f ms\n", quantile(saves, 0.95) * 1e3);
    std::printf("save_processor_median %.2f ms\n", quantile(processor, 0.5) * 1e3);
    std::printf("bare_median %.2f ms\n", quantile(bare, 0.5) * 1e3);
    std::printf("bare_95th %.2f ms\n", quantile(bare, 0.95) * 1e3);
    std::printf("save_to_bare_median %.3f ratio\n", quantile(saves, 0.5) / quantile(bare, 0.5));
    std::printf("save_to_bare_95th %.3f ratio\n", quantile(saves, 0.95) / quantile(bare, 0.95));
}

}

int main()
{
    StoreHome home;
    const auto files = home.makeFiles(entryCount + rounds);
    const QByteArray json = StateCoding::encode(fullState(home, files));
    if (!NativeFile::writeNew(home.stateFile(), json))
        return 1;
    std::printf("state_file %.3f MB\n", static_cast<double>(json.size()) / 1e6);
    measureStarts(home);
    measureSaves(home, files.mid(entryCount));
    return 0;
}
