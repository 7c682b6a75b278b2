#include "FullDisk.h"
#include "StoreWorld.h"

namespace {

QString q(const char *text)
{
    return QString::fromUtf8(text);
}

/// Shelves "A", "B", … as told by a row of their names, "*" before the current
/// one and "-" after one that is empty. The others hold two files each.
class Shelves : public World
{
public:
    explicit Shelves(const char *row)
    {
        ShelfState state;
        for (const QString &word : q(row).split(u' ')) {
            Shelf made = World::shelf({});
            made.name = word.mid(word.startsWith(u'*') ? 1 : 0, 1);
            for (const char *end : { "0", "1" }) {
                if (!word.endsWith(u'-'))
                    made.items.append(World::item(file(made.name->toUtf8() + end), queue.now()));
            }
            if (word.startsWith(u'*'))
                state.current = made.id;
            state.shelves.append(made);
        }
        writeState(state);
        store();
    }

    /// Of an open or closed shelf; an id of no shelf for other names.
    QUuid id(const QString &name)
    {
        for (const auto *list : { &store().shelves.value(), &store().closed.value() }) {
            for (const Shelf &shelf : *list) {
                if (store().title(shelf) == name)
                    return shelf.id;
            }
        }
        return QUuid::createUuid();
    }
    using World::id;

    /// In the constructor's form.
    QString row()
    {
        QStringList words;
        for (const ShelfInfo &info : store().shelfInfos())
            words.append((info.id == store().currentID.value() ? q("*") : QString()) + info.title
                         + (info.count == 0 ? q("-") : QString()));
        return words.join(u' ');
    }

    QString closedRow()
    {
        QStringList words;
        for (const Shelf &shelf : store().closed.value())
            words.append(store().title(shelf));
        return words.join(u' ');
    }

    /// The names of the files on an open shelf.
    QString files(const QString &shelf)
    {
        QStringList names;
        for (const Shelf &each : store().shelves.value()) {
            for (const ShelfItem &item : each.items) {
                if (each.id == id(shelf))
                    names.append(item.url.fileName());
            }
        }
        return names.join(u' ');
    }

    void expectSaved()
    {
        EXPECT_EQ(savedState(),
                  (ShelfState { store().currentID.value(), store().shelves.value(),
                                store().closed.value() }));
    }
};

}

TEST(ShelvesTest, NewShelvesTakeANumberThatNoOtherHas)
{
    World w;
    w.store().newShelf();
    w.store().newShelf();
    w.store().add(w.files(1));
    const QUuid third = w.store().currentID.value();
    EXPECT_EQ(w.store().currentTitle(), q("Shelf 3"));
    w.store().closeShelf(third);
    w.store().renameShelf(w.store().shelves.value().first().id, q("Shelf 4"));
    w.store().newShelf(); // 3 is closed, 4 a name.
    EXPECT_EQ(w.store().currentTitle(), q("Shelf 5"));
    EXPECT_EQ(w.store().shelves.value().size(), 3);
    EXPECT_EQ(w.savedState()->current, w.store().currentID.value());
}

TEST(ShelvesTest, ANameIsTrimmedAndCutAndNeedNotBeUnique)
{
    const QString accents = q("e\u0301").repeated(41);
    const std::pair<QString, QString> cases[] = {
        { q(" \n x y\u2028 "), q("x y") },
        { q("B"), q("B") },
        { q(" \t\n"), q("A") },
        { QString(), q("A") },
        { accents, accents.left(80) },
    };
    for (const auto &[given, title] : cases) {
        Shelves w("*A B");
        w.store().renameShelf(w.id(q("A")), given);
        EXPECT_EQ(w.store().currentTitle(), title);
        w.expectSaved();
    }
    Shelves w("*A B");
    w.store().closeShelf(w.id(q("B")));
    w.store().renameShelf(w.id(q("B")), q("x")); // Closed.
    w.store().renameShelf(QUuid::createUuid(), q("x"));
    EXPECT_EQ(w.row() + w.closedRow(), q("*AB"));
    auto unnamed = w.store().shelves.value();
    unnamed.first().name = QString();
    w.store().shelves.set(unnamed);
    EXPECT_EQ(w.store().currentTitle(), QString()); // An empty name is a name.
}

TEST(ShelvesTest, AClosedCurrentShelfGivesWayToItsNeighbour)
{
    const struct
    {
        const char *before, *closed, *after, *kept;
    } cases[] = {
        { "*A B C", "A", "*B C", "A" }, { "A *B C", "B", "A *C", "B" },
        { "A B *C", "C", "A *B", "C" }, { "*A B", "B", "*A", "B" },
        { "*A", "A", "*A", "" },        { "*A B", "X", "*A B", "" },
        { "*A- B", "A", "*B", "" },     { "*A B-", "B", "*A", "" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.before << ", closing " << c.closed);
        Shelves w(c.before);
        w.store().closeShelf(w.id(q(c.closed)));
        EXPECT_EQ(w.row(), q(c.after));
        EXPECT_EQ(w.closedRow(), q(c.kept));
        const bool kept = *c.kept != '\0';
        EXPECT_EQ(w.notice(), kept ? q("%1 closed").arg(q(c.kept)) : QString());
        if (kept) {
            EXPECT_EQ(w.store().closed.value().first().closedAt, w.queue.now());
        }
        w.expectSaved();
    }
}

TEST(ShelvesTest, TheSixthClosedShelfEndsTheOldestWithItsOwnFiles)
{
    for (const bool full : { false, true }) {
        SCOPED_TRACE(full ? "full disk" : "room on the disk");
        Shelves w("*A- B- C- D- E- F- G");
        QList<QByteArray> own;
        for (int i = 0; i < 6; ++i) {
            w.store().switchToIndex(i);
            w.store().addText(q("snippet"));
            own.append(FilePath::fromUrl(w.urls().last()));
            w.store().add({ w.file("kept") });
        }
        for (int i = 0; i < 5; ++i)
            w.store().closeShelf(w.store().shelves.value().first().id);
        EXPECT_EQ(w.droppedNames().size(), 6);
        std::optional<FullDisk> disk;
        if (full)
            disk.emplace();
        w.store().closeShelf(w.store().shelves.value().first().id);
        disk.reset();
        EXPECT_EQ(w.row(), q("*G"));
        EXPECT_EQ(w.closedRow(), q("F E D C B"));
        // A file that the state on disk still names is not deleted.
        EXPECT_EQ(FilePath::exists(own.first()), full);
        EXPECT_EQ(w.droppedNames().size(), full ? 6 : 5);
        EXPECT_TRUE(FilePath::exists(w.home() + "/kept"));
        w.restart();
        EXPECT_EQ(w.closedRow(), full ? q("E D C B A") : q("F E D C B"));
    }
}

TEST(ShelvesTest, ClosingEndsTheTransfersOfThatShelfAlone)
{
    Shelves w("*A B");
    const auto a = w.store().shelves.value().first().items;
    const auto b = w.store().shelves.value().last().items;
    QList<int> cancelled;
    w.store().uploadCancels = { { a.first().id, [&] { cancelled.append(0); } },
                                { b.first().id, [&] { cancelled.append(1); } } };
    w.store().uploading.set({ a.first().id, b.first().id });
    w.store().progress.set({ { a.first().id, 0.1 }, { b.first().id, 0.2 } });
    w.store().closeShelf(w.id(q("B")));
    EXPECT_EQ(cancelled, QList { 1 });
    EXPECT_EQ(w.store().uploading.value(), QSet { a.first().id });
    EXPECT_EQ(w.store().progress.value().keys(), QList { a.first().id });
    w.store().reopenShelf(w.id(q("B")));
    EXPECT_EQ(w.store().items.value(), b);
}

TEST(ShelvesTest, AReopenedShelfComesLastWithWhatIsStillThere)
{
    Shelves w("A *B C");
    const auto before = w.store().items.value();
    w.store().togglePin(w.id(q("B")));
    w.store().closeShelf(w.id(q("B")));
    w.store().togglePin(w.id(q("B"))); // Closed: as it is.
    NativeFile::remove(w.home() + "/B0");
    w.bookmarks.moved.insert(w.home() + "/B1", w.home() + "/C1");
    w.store().reopenShelf(w.id(q("B")));
    EXPECT_EQ(w.row(), q("A C *B"));
    EXPECT_EQ(w.closedRow(), QString());
    EXPECT_TRUE(w.store().currentShelf()->pinned);
    EXPECT_FALSE(w.store().currentShelf()->closedAt);
    EXPECT_EQ(w.files(q("B")), q("C1"));
    EXPECT_EQ(w.id(0), before.at(1).id);
    w.expectSaved();

    w.store().reopenShelf(QUuid::createUuid());
    w.store().reopenShelf(w.id(q("A")));
    EXPECT_EQ(w.row(), q("A C *B"));
}

TEST(ShelvesTest, EntriesMove)
{
    const struct
    {
        const char *what, *ids;
        std::optional<QString> destination;
        const char *row, *current, *other; // What is on A and on B after it.
        const char *title; // Of the destination, if anything moved.
    } cases[] = {
        { "to another", "0", q("B"), "*A B C-", "A1", "B0 B1 A0", "B" },
        { "all, in their order", "10", q("B"), "*A- B C-", "", "B0 B1 A0 A1", "B" },
        { "to an empty one", "1", q("C"), "*A B C", "A0", "B0 B1", "C" },
        { "to a new one", "1", std::nullopt, "*A B C- Shelf 4", "A0", "B0 B1", "Shelf 4" },
        { "to the same", "0", q("A"), "*A B C-", "A0 A1", "B0 B1", "" },
        { "to an unknown one", "0", q("X"), "*A B C-", "A0 A1", "B0 B1", "" },
        { "to a closed one", "0", q("D"), "*A B C-", "A0 A1", "B0 B1", "" },
        { "nothing", "", std::nullopt, "*A B C-", "A0 A1", "B0 B1", "" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Shelves w("*A B C- D");
        w.store().closeShelf(w.id(q("D")));
        const QString before = w.notice();
        const auto entries = w.store().items.value();
        QSet<QUuid> ids { QUuid::createUuid() };
        for (const char *index = c.ids; *index != '\0'; ++index)
            ids.insert(w.id(*index - '0'));
        w.store().onRemoved = [](const auto &) { ADD_FAILURE() << "a move is no removal"; };
        w.store().uploading.set({ w.id(0) });
        w.store().selectAll();
        w.sounds.played.clear();

        const bool moved = *c.title != '\0';
        w.store().move(ids, c.destination ? std::optional(w.id(*c.destination)) : std::nullopt);
        EXPECT_EQ(w.row(), q(c.row));
        EXPECT_EQ(w.files(q("A")), q(c.current));
        EXPECT_EQ(w.files(q("B")), q(c.other));
        EXPECT_EQ(w.notice(), moved ? q("moved to ") + q(c.title) : before);
        EXPECT_EQ(w.sounds.played.size(), moved ? 1u : 0u);
        EXPECT_EQ(w.store().selection.value().size(), w.store().items.value().size());
        EXPECT_EQ(w.store().uploading.value().size(), 1);
        EXPECT_FALSE(w.store().undoRemove());
        w.expectSaved();
        QList<ShelfItem> all = w.store().items.value();
        for (const Shelf &shelf : w.store().shelves.value()) {
            if (moved && w.store().title(shelf) == q(c.title))
                all += shelf.items;
        }
        for (const ShelfItem &entry : entries)
            EXPECT_TRUE(all.contains(entry)); // As it was, in every field.
    }
}

TEST(ShelvesTest, WhatTheDestinationHasAlreadyLeavesAllTheSame)
{
    Shelves w("*A B-");
    w.store().addText(q("snippet"));
    const QUrl own = w.urls().last();
    w.store().switchToIndex(1);
    w.store().add({ own });
    const auto there = w.store().items.value();
    w.store().switchToIndex(0);
    w.store().selectAll();
    w.store().move(w.store().selection.value(), w.id(q("B"))); // The very set that changes.
    EXPECT_EQ(w.row(), q("*A- B"));
    EXPECT_EQ(w.store().shelves.value().last().items.first(), there.first());
    EXPECT_EQ(w.store().shelves.value().last().items.size(), 3);
    w.queue.advance(100);
    EXPECT_TRUE(FilePath::exists(FilePath::fromUrl(own)));
}

TEST(ShelvesTest, AShelfIsChosenByItsPlace)
{
    const std::pair<qsizetype, const char *> cases[] = {
        { 2, "A B *C" }, { 0, "*A B C" }, { 1, "A *B C" }, { -1, "A *B C" }, { 3, "A *B C" },
    };
    for (const auto &[index, row] : cases) {
        Shelves w("A *B C");
        w.store().switchToIndex(index);
        EXPECT_EQ(w.row(), q(row));
        w.expectSaved();
    }
}
