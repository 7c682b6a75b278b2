#include "StoreWorld.h"

#include "platform/fake/FakePreferences.h"
#include "store/LegacyMigration.h"

#include <sys/resource.h>
#include <sys/sysmacros.h>

TEST(LoadTest, AFirstLaunchHasOneEmptyShelfAndWritesNothing)
{
    World w;
    EXPECT_EQ(w.store().shelves.value().size(), 1);
    EXPECT_EQ(w.store().currentID.value(), w.store().shelves.value().first().id);
    EXPECT_EQ(w.store().currentTitle(), QStringLiteral("Vantle"));
    EXPECT_FALSE(w.saved());
}

TEST(LoadTest, ASavedStateComesBackWithoutTheFilesThatAreGone)
{
    World w;
    const Shelf first = World::shelf({ World::item(w.file("a")) });
    Shelf second
        = World::shelf({ World::item(w.file("b")), World::item(FilePath::toUrl(w.home() + "/gone")),
                         World::item(QUrl(QStringLiteral("https://no.file/"))) });
    second.name = QStringLiteral("Second");
    second.items[0].bookmark = "opaque";
    Shelf closed = World::shelf({ World::item(FilePath::toUrl(w.home() + "/gone too")) });
    closed.closedAt = 5;
    for (const QUuid &current : { second.id, closed.id }) {
        w.writeState({ current, { first, second }, { closed } });
        Shelf expected = second;
        expected.items.resize(1);
        // A current shelf that is not open is the first.
        const Shelf &shown = current == second.id ? expected : first;
        EXPECT_EQ(w.restart().currentID.value(), shown.id);
        EXPECT_EQ(w.store().items.value(), shown.items);
        EXPECT_EQ(w.store().shelves.value(), (QList { first, expected }));
        EXPECT_EQ(w.store().closed.value(), QList { closed });
        // The launch itself has written what is left.
        EXPECT_EQ(w.savedState(), (ShelfState { shown.id, { first, expected }, { closed } }));
    }
}

TEST(LoadTest, WhatCannotBeReadIsSetAsideAndNothingIsSwept)
{
    const QByteArray noShelf
        = R"({"current":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","shelves":[],"closed":[]})";
    for (const QByteArray &damage :
         { QByteArray(), QByteArray("{\"current\":"), QByteArray("[]"), noShelf }) {
        for (const bool isLink : { false, true }) {
            SCOPED_TRACE(damage.toStdString() + (isLink ? " by a link" : ""));
            World w;
            const QByteArray folder = isLink ? w.home() + "/elsewhere" : w.paths().dataDir;
            w.write(folder + "/shelves.json", damage);
            w.write(w.dropped("Text.txt"), "text");
            w.write(w.dropped(".hidden"), "");
            if (isLink) {
                ASSERT_EQ(symlink("../elsewhere/shelves.json", w.data("shelves.json").constData()),
                          0);
            }
            EXPECT_TRUE(w.store().items.value().isEmpty());
            EXPECT_EQ(w.saved(), damage); // Until a change replaces it.
            w.store().add({ w.file("a") });
            w.store().add({ w.file("b") });
            EXPECT_EQ(w.read(folder + "/shelves-damaged.json"), damage);
            EXPECT_TRUE(w.savedState());
            // The next start finds a good state, and still no reason to delete anything.
            EXPECT_EQ(w.restart().items.value().size(), 2);
            EXPECT_EQ(w.droppedNames().size(), 2);
            NativeFile::remove(folder + "/shelves-damaged.json");
            w.restart();
            EXPECT_TRUE(w.droppedNames().isEmpty());
        }
    }
}

TEST(LoadTest, WhatCannotBeOpenedIsNotMissing)
{
    World w;
    w.store().addText(QStringLiteral("kept"));
    const auto saved = w.saved();
    {
        // No handle is left, as when a program leaks them.
        rlimit before {};
        ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
        const rlimit none { 0, before.rlim_max };
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
        w.restart();
        setrlimit(RLIMIT_NOFILE, &before);
    }
    EXPECT_TRUE(w.urls().isEmpty());
    w.store().add({ w.file("a") });
    EXPECT_EQ(w.read(w.data("shelves-damaged.json")), saved);
    EXPECT_EQ(w.restart().items.value().size(), 1);
    EXPECT_EQ(w.droppedNames().size(), 1);
}

TEST(LoadTest, TheSweepLeavesTheFolderByNoLink)
{
    World w;
    w.write(w.home() + "/documents/precious", "");
    w.store().add({ w.file("a") });
    ASSERT_EQ(symlink("../documents", w.data("dropped").constData()), 0);
    w.store().addText(QStringLiteral("kept there"));
    w.store().clear();
    w.queue.advance(61);
    w.restart();
    EXPECT_TRUE(FilePath::exists(w.home() + "/documents/precious"));
}

TEST(LoadTest, TheOlderFileIsReadOnce)
{
    const QByteArray noShelf
        = R"({"current":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","shelves":[],"closed":[]})";
    for (const QByteArray &newer : { QByteArray(), noShelf }) {
        SCOPED_TRACE(newer.constData());
        World w;
        const QByteArray old = R"([{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","url":")"
            + w.file("a").toEncoded() + R"(","addedAt":1}])";
        w.write(w.data("shelves.json"), newer);
        w.write(w.data("items.json"), old);
        EXPECT_EQ(w.urls(), QList { w.file("a") });
        EXPECT_EQ(w.read(w.data("items-v1-backup.json")), old);
        EXPECT_FALSE(FilePath::exists(w.data("items.json")));

        w.write(w.data("items.json"), "[]");
        w.restart();
        EXPECT_EQ(w.urls(), QList { w.file("a") });
    }
}

TEST(LoadTest, TheSweepTakesWhatNoShelfNames)
{
    World w;
    const Shelf open = World::shelf({ World::item(FilePath::toUrl(w.dropped("open.txt"))),
                                      World::item(w.file("namesake.txt")) });
    const Shelf closed = World::shelf({ World::item(FilePath::toUrl(w.dropped("closed.txt"))) });
    w.writeState({ open.id, { open }, { closed } });
    for (const char *name : { "open.txt", "closed.txt", "namesake.txt", "orphan.txt", ".hidden",
                              "bad\xff", "folder/inner" })
        w.write(w.dropped(name), "x");
    const QUrl outside = w.file("kept");
    ASSERT_EQ(symlink(FilePath::fromUrl(outside).constData(), w.dropped("link").constData()), 0);

    w.store();
    EXPECT_EQ(w.droppedNames(), (QList<QByteArray> { "closed.txt", "namesake.txt", "open.txt" }));
    EXPECT_TRUE(FilePath::exists(FilePath::fromUrl(outside)));
}

TEST(LoadTest, EntriesOfTheOldDataFolderFollowItsMove)
{
    World w;
    const Shelf open = World::shelf({
        World::item(QUrl::fromEncoded("file://" + w.home() + "/x/../Shelf/dropped/a%FF")),
        World::item(FilePath::toUrl(w.home() + "/Shelf/dropped/folder", FilePath::Kind::Directory)),
        World::item(w.file("Shelf2")),
    });
    const Shelf closed
        = World::shelf({ World::item(FilePath::toUrl(w.paths().oldDataDir + "/y")) });
    w.writeState({ open.id, { open }, { closed } });
    w.write(w.dropped("a\xff"), "");
    w.write(w.dropped("folder/inner"), "");

    EXPECT_EQ(w.urls(),
              (QList { FilePath::toUrl(w.dropped("a\xff")),
                       FilePath::toUrl(w.dropped("folder"), FilePath::Kind::Directory),
                       w.file("Shelf2") }));
    EXPECT_EQ(w.store().closed.value().first().items.first().url, FilePath::toUrl(w.data("y")));
}

TEST(LoadTest, NothingOnAShelfIsOpened)
{
    World w;
    const QByteArray home = w.home();
    QList<ShelfItem> items;
    for (const char *name : { "/fifo", "/device", "/dangling", "/locked", "/loop" })
        items.append(World::item(FilePath::toUrl(home + name)));
    ASSERT_EQ(mkfifo((home + "/fifo").constData(), 0600), 0);
    if (mknod((home + "/device").constData(), S_IFCHR | 0600, makedev(1, 3)) != 0)
        items.removeAt(1); // Containers may forbid it.
    ASSERT_EQ(symlink("/nowhere", (home + "/dangling").constData()), 0);
    ASSERT_EQ(symlink("loop", (home + "/loop").constData()), 0);
    ASSERT_EQ(mkdir((home + "/locked").constData(), 0), 0);
    const Shelf open = World::shelf(items);
    w.writeState({ open.id, { open }, {} });
    EXPECT_EQ(w.store().items.value(), items);

    const QList<QUrl> urls = w.urls();
    w.store().clear();
    w.store().add(urls);
    EXPECT_EQ(w.urls().size(), urls.size());
    EXPECT_TRUE(w.urls().contains(FilePath::toUrl(home + "/locked", FilePath::Kind::Directory)));
    // A FIFO in place of the state is no state.
    unlink(w.data("shelves.json").constData());
    ASSERT_EQ(mkfifo(w.data("shelves.json").constData(), 0600), 0);
    EXPECT_TRUE(w.restart().items.value().isEmpty());
}

TEST(MigrationTest, TakesOverOnceAndOverwritesNothing)
{
    World w;
    w.write(w.paths().oldDataDir + "/dropped/a", "a");
    FakePreferences own;
    own.object = { { QStringLiteral("off"), false } };
    const QJsonObject old { { QStringLiteral("off"), true },
                            { QStringLiteral("new"), QStringLiteral("x") } };
    LegacyMigration::runIfNeeded(own, old, w.paths());
    EXPECT_EQ(own.object,
              (QJsonObject { { QStringLiteral("off"), false },
                             { QStringLiteral("new"), QStringLiteral("x") },
                             { QStringLiteral("migratedFromShelf"), true } }));
    EXPECT_TRUE(FilePath::exists(w.dropped("a")));
    EXPECT_FALSE(FilePath::exists(w.paths().oldDataDir));

    own.object.remove(QStringLiteral("new"));
    LegacyMigration::runIfNeeded(own, old, w.paths());
    EXPECT_FALSE(own.object.contains(QStringLiteral("new")));
}

TEST(MigrationTest, AFolderOfOurOwnStays)
{
    World w;
    w.write(w.paths().oldDataDir + "/old", "");
    w.write(w.data("new"), "");
    FakePreferences own;
    LegacyMigration::runIfNeeded(own, std::nullopt, w.paths());
    EXPECT_TRUE(FilePath::exists(w.paths().oldDataDir + "/old"));
    EXPECT_TRUE(FilePath::exists(w.data("new")));
    EXPECT_TRUE(own.value(QStringLiteral("migratedFromShelf")).toBool());
}
