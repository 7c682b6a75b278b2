#include "StoreWorld.h"

#include "platform/fake/FakePreferences.h"
#include "store/LegacyMigration.h"

#include <sys/fsuid.h>
#include <sys/resource.h>

namespace {

const QByteArray noShelf
    = R"({"current":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","shelves":[],"closed":[]})";

}

TEST(LoadTest, WhereTheCurrentShelfIsNotOpenTheFirstOneIs)
{
    World w;
    const QList open { World::shelf({ World::item(w.file("a")) }), World::shelf({}) };
    const Shelf closed = World::shelf({});
    w.writeState({ closed.id, open, { closed } });
    EXPECT_EQ(w.urls(), QList { w.file("a") });
    EXPECT_EQ(w.savedState(), (ShelfState { open.first().id, open, { closed } }));
}

TEST(LoadTest, WhatCannotBeReadIsSetAsideAndNothingIsSwept)
{
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
    for (const bool isForbidden : { false, true }) {
        SCOPED_TRACE(isForbidden ? "no permission" : "no handle is left");
        World w;
        w.store().addText(QStringLiteral("kept"));
        const auto saved = w.saved();
        rlimit handles {};
        ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &handles), 0);
        const rlimit none { 0, handles.rlim_max };
        if (isForbidden) {
            chmod(w.data("shelves.json").constData(), 0);
            setfsuid(65534); // Root may read it all the same, but not as anybody else.
        } else {
            ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
        }
        w.restart();
        setrlimit(RLIMIT_NOFILE, &handles);
        setfsuid(geteuid());
        chmod(w.data("shelves.json").constData(), 0600);
        EXPECT_TRUE(w.urls().isEmpty());
        w.store().add({ w.file("a") });
        EXPECT_EQ(w.read(w.data("shelves-damaged.json")), saved);
        EXPECT_EQ(w.restart().items.value().size(), 1);
        EXPECT_EQ(w.droppedNames().size(), 1);
    }
}

TEST(LoadTest, OnlyFilesInTheStoresOwnFolderAreDeleted)
{
    World w;
    w.write(w.home() + "/documents/precious", "");
    w.write(w.dropped("own/inner"), "");
    w.write(w.dropped("a"), "");
    ASSERT_EQ(symlink((w.home() + "/documents").constData(), w.dropped("link").constData()), 0);
    QList<QUrl> urls;
    // The second leads through a link to the user's folder; the last is the folder itself.
    for (const char *path : { "dropped/../../documents/precious", "dropped/link/precious",
                              "dropped/link", "dropped/own", "x/../dropped/./a", "dropped" })
        urls.append(QUrl::fromEncoded("file://" + w.data(path)));
    w.store().add(urls);
    ASSERT_EQ(w.urls().size(), urls.size());
    w.store().clear();
    w.queue.advance(61);
    EXPECT_TRUE(FilePath::exists(w.home() + "/documents/precious"));
    EXPECT_TRUE(FilePath::exists(w.data("dropped")));
    EXPECT_TRUE(w.droppedNames().isEmpty());
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

    // What was renamed while the program was off, and is still searched for, is nobody's by name.
    ASSERT_EQ(rename(w.dropped("open.txt").constData(), w.dropped("renamed.txt").constData()), 0);
    NativeFile::remove(w.dropped("closed.txt"));
    w.write(w.dropped("orphan.txt"), "x");
    w.bookmarks.searching.insert(w.dropped("open.txt"));
    w.bookmarks.moved.insert(w.dropped("open.txt"), w.dropped("renamed.txt"));
    w.restart();
    EXPECT_EQ(w.droppedNames(), (QList<QByteArray> { "namesake.txt", "renamed.txt" }));
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

TEST(MigrationTest, TakesOverOnceAndOverwritesNothing)
{
    for (const bool hasOwnFolder : { false, true }) {
        World w;
        w.write(w.paths().oldDataDir + "/dropped/a", "a");
        if (hasOwnFolder)
            w.write(w.data("own"), "");
        const QString off = QStringLiteral("off");
        const QString fresh = QStringLiteral("new");
        FakePreferences own;
        own.object = { { off, false } };
        for (const bool isFirst : { true, false }) {
            LegacyMigration::runIfNeeded(own, QJsonObject { { off, true }, { fresh, 1 } },
                                         w.paths());
            EXPECT_FALSE(own.value(off).toBool());
            EXPECT_EQ(own.object.contains(fresh), isFirst);
            own.object.remove(fresh);
        }
        EXPECT_EQ(FilePath::exists(w.dropped("a")), !hasOwnFolder);
        EXPECT_EQ(FilePath::exists(w.paths().oldDataDir), hasOwnFolder);
        EXPECT_EQ(FilePath::exists(w.data("own")), hasOwnFolder);
    }
}
