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

    void expectSaved()
    {
        EXPECT_EQ(savedState(),
                  (ShelfState { store().currentID.value(), store().shelves.value(),
                                store().closed.value() }));
    }
};

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
