#include "StoreWorld.h"

namespace {

using Path = QByteArray;

/// Which file the state is: another one after every save.
ino_t inode(const Path &path)
{
    struct stat information = {};
    return stat(path.constData(), &information) == 0 ? information.st_ino : 0;
}

void moveFile(World &w, const Path &from, const Path &to)
{
    NativeFile::makeFolder(FilePath::parent(to));
    ASSERT_EQ(rename(from.constData(), to.constData()), 0);
    w.bookmarks.moved.insert(from, to);
}

void check(World &w)
{
    w.store().refreshLocationsInBackground();
    w.queue.settle();
}

/// What two checks agree on.
void checkTwice(World &w)
{
    check(w);
    w.queue.advance(2);
    check(w);
}

}

TEST(LocationTest, EntriesFollowTheirFilesAndLeaveWithThem)
{
    enum class End { Stays, Follows, Leaves };
    constexpr auto stays = End::Stays, follows = End::Follows, leaves = End::Leaves;
    const std::optional<QByteArray> none;
    const struct
    {
        const char *what;
        Path now; // Where the file is; "" is nowhere.
        std::optional<QByteArray> bookmark;
        QSet<Path> FakeBookmarks::*listed; // Where the file's own path is noted.
        End loaded, checked, checkedAgain;
    } cases[] = {
        { "in place", "/a", "good", nullptr, stays, stays, stays },
        { "renamed", "/b", "good", nullptr, follows, follows, follows },
        { "deleted", "", "good", nullptr, leaves, stays, leaves },
        { "trashed", "/a", "good", &FakeBookmarks::trash, leaves, leaves, leaves },
        { "damaged bookmark", "/a", "damaged", nullptr, stays, stays, stays },
        { "damaged bookmark, renamed", "/b", "damaged", nullptr, leaves, stays, leaves },
        { "no bookmark", "/a", none, nullptr, follows, follows, follows }, // It gets one.
        { "no bookmark, trash", "/a", none, &FakeBookmarks::trash, follows, follows, leaves },
        { "no bookmark, deleted", "", none, nullptr, leaves, stays, leaves },
        { "does not answer", "", "good", &FakeBookmarks::silent, stays, stays, stays },
        { "searched for", "", "good", &FakeBookmarks::searching, stays, stays, stays },
    };
    for (const auto &c : cases) {
        for (const bool load : { false, true }) {
            SCOPED_TRACE(c.what + std::string(load ? ", at a start" : ", in a check"));
            World w;
            const Path own = w.home() + "/a";
            ShelfItem before = World::item(w.file("a"));
            if (c.bookmark != "good")
                before.bookmark = c.bookmark;
            const Shelf shelf = World::shelf({ before, World::item(w.file("other")) });
            w.writeState({ shelf.id, { shelf }, {} });
            if (!load)
                w.store().items.set(shelf.items); // As they were before the start.
            if (c.now.isEmpty())
                NativeFile::remove(own);
            else if (c.now != "/a")
                moveFile(w, own, w.home() + c.now);
            if (c.listed)
                (w.bookmarks.*c.listed).insert(own);

            ShelfItem after = before;
            after.url = FilePath::toUrl(w.home() + c.now);
            after.bookmark = FakeBookmarks::bookmarkOf(w.home() + c.now);
            const auto expect = [&](End end) {
                QList<ShelfItem> expected { shelf.items.last() };
                if (end != leaves)
                    expected.prepend(end == stays ? before : after);
                EXPECT_EQ(w.store().items.value(), expected);
                EXPECT_TRUE(end == stays || w.savedState()->shelves.first().items == expected);
            };
            w.store();
            if (load) {
                expect(c.loaded);
                continue;
            }
            check(w);
            expect(c.checked);
            w.queue.advance(2);
            check(w);
            expect(c.checkedAgain);
        }
    }
}

TEST(LocationTest, OnlyTwoSuccessiveChecksOfOneFileCallItGone)
{
    World w;
    w.store().add(w.files(2));
    const Path own = w.home() + "/file1";
    const auto absent = [&](const std::function<void()> &meanwhile) {
        NativeFile::remove(own);
        check(w);
        meanwhile();
        w.queue.advance(3);
        check(w);
        return w.urls().size() == 1;
    };
    EXPECT_FALSE(absent([&] {
        w.queue.advance(1.9);
        check(w); // Too soon for a second opinion.
        EXPECT_EQ(w.urls().size(), 2);
        w.file("file1");
    })) << "was back";
    EXPECT_FALSE(absent([&] {
        w.file("file1"); // It was back in between, and is missing for the first time again.
        check(w);
        NativeFile::remove(own);
    }));
    w.file("file1");
    check(w);
    EXPECT_FALSE(absent([&] { w.bookmarks.silent.insert(own); }));
    w.bookmarks.silent.clear();
    check(w);
    EXPECT_EQ(w.urls().size(), 2) << "the answer between was none";
    w.bookmarks.searching.insert(own);
    w.queue.advance(3);
    check(w);
    EXPECT_EQ(w.urls().size(), 2) << "the search goes on";
    w.bookmarks.searching.clear();
    check(w);
    EXPECT_EQ(w.urls().size(), 1);
}

TEST(LocationTest, AllShelvesAreLookedForTogetherAtAStart)
{
    World w;
    QList<Shelf> shelves { World::shelf({}) };
    for (int i = 0; i < 3; ++i)
        shelves.append(World::shelf({ World::item(w.file("f" + QByteArray::number(i))) }));
    w.writeState({ shelves.first().id, shelves, {} });
    EXPECT_EQ(w.store().shelves.value(), shelves);
    EXPECT_EQ(w.bookmarks.checks, 1);
}

TEST(LocationTest, ACheckThatFindsNothingNewWritesAndTellsNothing)
{
    World w;
    w.store().add(w.files(3));
    const ino_t before = inode(w.data("shelves.json"));
    int told = 0;
    const auto tell = [&](const auto &) { ++told; };
    const Ticket tickets[] = {
        w.store().items.subscribe(tell, Deliver::ChangesOnly),
        w.store().shelves.subscribe(tell, Deliver::ChangesOnly),
        w.store().selection.subscribe(tell, Deliver::ChangesOnly),
        w.store().uploading.subscribe(tell, Deliver::ChangesOnly),
        w.store().progress.subscribe(tell, Deliver::ChangesOnly),
    };
    check(w);
    EXPECT_EQ(w.bookmarks.checks, 1);
    EXPECT_EQ(told, 0);
    EXPECT_EQ(inode(w.data("shelves.json")), before);

    moveFile(w, w.home() + "/file1", w.home() + "/new");
    check(w);
    EXPECT_EQ(told, 2);
    EXPECT_NE(inode(w.data("shelves.json")), before);
}

TEST(LocationTest, OneCheckRunsAtATimeAndNoneForAnEmptyShelf)
{
    World w;
    check(w);
    EXPECT_EQ(w.bookmarks.checks, 0);
    w.store().add(w.files(1));
    w.store().refreshLocationsInBackground();
    check(w);
    EXPECT_EQ(w.bookmarks.checks, 1);

    // What reacts to a result may ask for the next check at once.
    moveFile(w, w.home() + "/file0", w.home() + "/gone");
    const Ticket ticket = w.store().items.subscribe(
        [&](const auto &) { w.store().refreshLocationsInBackground(); }, Deliver::ChangesOnly);
    check(w);
    EXPECT_EQ(w.bookmarks.checks, 3);
    EXPECT_EQ(w.urls(), QList { w.file("gone") });
}

TEST(LocationTest, LateResultsChangeOnlyWhatIsStillAsItWas)
{
    World w;
    const Shelf a = World::shelf(
        { World::item(w.file("a0")), World::item(w.file("a1")), World::item(w.file("a2")) });
    const Shelf b = World::shelf({ World::item(w.file("b")) });
    w.writeState({ a.id, { a, b }, {} });
    w.store();
    const auto loseAll = [&] {
        for (const char *name : { "/a0", "/a1", "/b" })
            NativeFile::remove(w.home() + name);
        moveFile(w, w.home() + "/a2", w.home() + "/moved");
    };
    const auto putBack = [&] {
        w.bookmarks.moved.clear();
        for (const char *name : { "a0", "a1", "a2", "b" })
            w.file(name);
    };

    // The other shelf shows by then.
    w.store().refreshLocationsInBackground();
    loseAll();
    w.store().switchTo(b.id); // Its own check is dropped, as one is running.
    w.queue.settle();
    EXPECT_EQ(w.store().shelves.value(), (QList { a, b }));
    putBack();
    w.store().switchTo(a.id);
    w.queue.settle();

    // One entry has left, and one has another address: it was renamed on the shelf.
    w.store().refreshLocationsInBackground();
    loseAll();
    w.store().removeIds({ a.items.at(0).id });
    auto renamed = w.store().items.value();
    renamed[0].url = w.file("renamed");
    w.store().items.set(renamed);
    w.queue.settle();
    EXPECT_EQ(w.urls(), (QList { w.file("renamed"), w.file("moved") }));

    // The store itself is gone.
    w.store().refreshLocationsInBackground();
    w.end();
    w.queue.settle();
}

TEST(LocationTest, WhatIsGoneLeavesQuietlyAndItsTransferEnds)
{
    World w;
    w.store().add(w.files(3));
    const QList<QUuid> ids { w.id(0), w.id(1), w.id(2) };
    QList<int> cancelled;
    for (int i = 0; i < 3; ++i)
        w.store().uploadCancels.insert(ids.at(i), [&cancelled, i] { cancelled.append(i); });
    w.store().uploading.set({ ids.at(1), ids.at(2) });
    w.store().progress.set({ { ids.at(1), 0.5 } });
    w.store().onRemoved = [](const auto &) { ADD_FAILURE() << "no removal"; };
    w.store().selectAll();
    w.sounds.played.clear();

    NativeFile::remove(w.home() + "/file1");
    checkTwice(w);
    EXPECT_EQ(w.urls(), (QList { w.file("file0"), w.file("file2") }));
    EXPECT_EQ(cancelled, QList { 1 });
    EXPECT_EQ(w.store().uploading.value(), QSet { ids.at(2) });
    EXPECT_TRUE(w.store().progress.value().isEmpty());
    EXPECT_EQ(w.store().selection.value(), (QSet { ids.at(0), ids.at(2) }));
    EXPECT_TRUE(w.sounds.played.empty());
    EXPECT_EQ(w.notice(), QString());
    EXPECT_FALSE(w.store().undoRemove());
}

TEST(LocationTest, AShelfIsCheckedWhenItComesOnShow)
{
    World w;
    const Shelf a = World::shelf({ World::item(w.file("a")) });
    const Shelf b = World::shelf({ World::item(w.file("b")), World::item(w.file("c")) });
    w.writeState({ a.id, { a, b }, {} });
    w.store();
    NativeFile::remove(w.home() + "/b");
    check(w);
    EXPECT_EQ(w.store().shelves.value().last(), b); // Not on show.
    w.store().switchTo(b.id);
    w.queue.advance(2);
    check(w);
    EXPECT_EQ(w.urls(), QList { w.file("c") });
}
