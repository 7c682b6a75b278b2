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
#include "platform/fake/FakeSounds.h"
#include "store/ShelfStore.h"
#include "store/StateCoding.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QMimeDatabase>

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
        : m_store(store)
        , m_home(std::move(home))
        , m_random(seed)
    {
    }

    void step()
    {
        const auto &operations = table();
        (this->*operations.at(below(operations.size())))();
    }

private:
    using Operation = void (Mutator::*)();
    static const QList<Operation> &table()
    {
        static const QList<Operation> operations {
            &Mutator::add,      &Mutator::add,      &Mutator::addText,  &Mutator::addLink,
            &Mutator::addImage, &Mutator::remove,   &Mutator::remove,   &Mutator::undo,
            &Mutator::clear,    &Mutator::switchTo, &Mutator::switchTo, &Mutator::newShelf,
            &Mutator::rename,   &Mutator::pin,      &Mutator::close,    &Mutator::close,
            &Mutator::reopen,   &Mutator::move,     &Mutator::prune,
        };
        return operations;
    }

    void add()
    {
        QList<QUrl> urls;
        for (qsizetype i = below(8); i >= 0; --i)
            urls.append(FilePath::toUrl(m_home + "/files/f" + QByteArray::number(below(200))));
        m_store.add(urls);
    }
    void addText() { m_store.addText(QStringLiteral("text %1").arg(below(1000))); }
    void addLink()
    {
        m_store.addLink(QUrl(QStringLiteral("https://example.org/%1").arg(below(1000))));
    }
    void addImage()
    {
        m_store.addImageData(QByteArray(below(5000), 'p'),
                             QMimeDatabase().mimeTypeForName(QStringLiteral("image/png")));
    }
    void remove() { m_store.removeIds(someIds()); }
    void undo() { m_store.undoRemove(); }
    void clear()
    {
        if (m_store.items.value().size() > 20)
            m_store.clear();
    }
    void switchTo() { m_store.switchTo(someShelf()); }
    void newShelf()
    {
        if (m_store.shelves.value().size() < 8)
            m_store.newShelf();
    }
    void rename() { m_store.renameShelf(someShelf(), QString::number(below(100))); }
    void pin() { m_store.togglePin(someShelf()); }
    void close() { m_store.closeShelf(someShelf()); }
    void reopen()
    {
        if (!m_store.closed.value().isEmpty())
            m_store.reopenShelf(m_store.closed.value().at(below(m_store.closed.value().size())).id);
    }
    void move()
    {
        m_store.move(someIds(), below(4) > 0 ? std::optional(someShelf()) : std::nullopt);
    }
    void prune()
    {
        if (below(4) == 0)
            m_store.pruneExpired(0.005);
    }

    QUuid someShelf()
    {
        return m_store.shelves.value().at(below(m_store.shelves.value().size())).id;
    }
    QSet<QUuid> someIds()
    {
        QSet<QUuid> ids;
        for (const ShelfItem &item : m_store.items.value()) {
            if (below(4) == 0)
                ids.insert(item.id);
        }
        return ids;
    }
    qsizetype below(qsizetype end) { return static_cast<qsizetype>(m_random() % size_t(end)); }

    ShelfStore &m_store;
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
    ShelfStore store(AppPaths(directories), queue, workers, bookmarks, sounds, texts);
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
