/// A store that changes and saves without pause until it is killed. Tells its
/// parent on standard output what it is doing, a line each:
///   loaded DIGEST   the state after the start
///   about DIGEST    of the bytes that are whole in the temporary file, before
///                   they take the state file's place
///   done DIGEST     an operation has returned; the state in memory
#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "base/QtMainQueue.h"
#include "base/ThreadWorkers.h"
#include "platform/fake/FakeBookmarks.h"
#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/FakeSounds.h"
#include "store/ShelfStore.h"
#include "store/StateCoding.h"

#include <QCoreApplication>
#include <QCryptographicHash>

#include <cstring>
#include <random>
#include <utility>

#include <unistd.h>

namespace {

void report(const char *what, const QByteArray &bytes)
{
    const auto digest = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
    const QByteArray line = what + (' ' + digest) + '\n';
    if (::write(STDOUT_FILENO, line.constData(), size_t(line.size())) != line.size())
        _exit(2);
}

}

extern "C" {

// The names are the linker's. NOLINTBEGIN(bugprone-reserved-identifier)
int __real_rename(const char *from, const char *to);
int __wrap_rename(const char *from, const char *to);

int __wrap_rename(const char *from, const char *to)
{
    if (std::strstr(to, "/shelves.json") != nullptr)
        report("about", NativeFile::read(from).bytes.value_or("unreadable"));
    return __real_rename(from, to);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace {

class Mutator
{
public:
    Mutator(ShelfStore &store, QByteArray home, unsigned seed)
        : s(store)
        , m_home(std::move(home))
        , m_random(seed)
    {
    }

    ShelfStore &s;

    void step()
    {
        const auto &operations = table();
        operations.at(below(operations.size()))(*this);
    }

private:
    // clang-format off
    static const QList<void (*)(Mutator &)> &table()
    {
        static const QList<void (*)(Mutator &)> operations {
            [](Mutator &x) { x.add(); },
            [](Mutator &x) { x.add(); },
            [](Mutator &x) { x.s.addText(QString::number(x.below(1000))); },
            [](Mutator &x) { x.s.addText(QStringLiteral("https://a.org/%1").arg(x.below(1000))); },
            [](Mutator &x) { x.s.addImageData(QByteArray(x.below(5000), 'p'), {}); },
            [](Mutator &x) { x.s.removeIds(x.someIds()); },
            [](Mutator &x) { x.s.removeIds(x.someIds()); },
            [](Mutator &x) { x.s.undoRemove(); },
            [](Mutator &x) { if (x.s.items.value().size() > 20) x.s.clear(); },
            [](Mutator &x) { x.s.switchTo(x.someShelf()); },
            [](Mutator &x) { x.s.switchTo(x.someShelf()); },
            [](Mutator &x) { if (x.s.shelves.value().size() < 8) x.s.newShelf(); },
            [](Mutator &x) { x.s.renameShelf(x.someShelf(), QString::number(x.below(100))); },
            [](Mutator &x) { x.s.togglePin(x.someShelf()); },
            [](Mutator &x) { x.s.closeShelf(x.someShelf()); },
            [](Mutator &x) { x.s.closeShelf(x.someShelf()); },
            [](Mutator &x) { x.s.reopenShelf(x.s.closed.value().value(x.below(5)).id); },
            [](Mutator &x) { x.s.move(x.someIds(), x.someShelf()); },
            [](Mutator &x) { x.s.move(x.someIds(), std::nullopt); },
            [](Mutator &x) { if (x.below(4) == 0) x.s.pruneExpired(0.005); },
        };
        return operations;
    }
    // clang-format on

    void add()
    {
        QList<QUrl> urls;
        for (qsizetype i = below(8); i >= 0; --i)
            urls.append(FilePath::toUrl(m_home + "/files/f" + QByteArray::number(below(200))));
        s.add(urls);
    }
    QUuid someShelf() { return s.shelves.value().at(below(s.shelves.value().size())).id; }
    QSet<QUuid> someIds()
    {
        QSet<QUuid> ids;
        for (const ShelfItem &item : s.items.value()) {
            if (below(4) == 0)
                ids.insert(item.id);
        }
        return ids;
    }
    qsizetype below(qsizetype end) { return static_cast<qsizetype>(m_random() % size_t(end)); }

    QByteArray m_home;
    std::mt19937 m_random;
};

QByteArray encoded(const ShelfStore &store)
{
    return StateCoding::encode(
        { store.currentID.value(), store.shelves.value(), store.closed.value() });
}

}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 3)
        return 2;
    const QByteArray home = argv[1];
    Directories directories;
    directories.data = home;
    QtMainQueue queue;
    ThreadWorkers workers;
    FakeBookmarks bookmarks;
    FakeSounds sounds;
    const Localizer texts(QString(), {});
    FakePictureDecoder pictures;
    ShelfStore store(AppPaths(directories), queue, workers, bookmarks, sounds, pictures, texts);
    report("loaded", encoded(store));
    Mutator mutator(store, home, static_cast<unsigned>(std::atoi(argv[2])));
    const std::function<void()> again = [&] {
        mutator.step();
        report("done", encoded(store));
        queue.post(again);
    };
    queue.post(again);
    return QCoreApplication::exec();
}
