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
            w.writeState(
                { shelf.id, { shelf, World::shelf({ World::item(w.file("third")) }) }, {} });
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
                EXPECT_EQ(w.bookmarks.checks, 1) << "of all shelves together";
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

TEST(LocationTest, ACheckThatFindsNothingNewWritesAndTellsNothing)
{
    World w;
    check(w);
    EXPECT_EQ(w.bookmarks.checks, 0) << "nothing to check";
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

    // What reacts to a result may ask for the next check at once.
    moveFile(w, w.home() + "/file1", w.home() + "/new");
    const Ticket again = w.store().items.subscribe(
        [&](const auto &) { w.store().refreshLocationsInBackground(); }, Deliver::ChangesOnly);
    check(w);
    EXPECT_EQ(w.bookmarks.checks, 3);
    EXPECT_EQ(told, 2);
    EXPECT_NE(inode(w.data("shelves.json")), before);
}

TEST(LocationTest, AResultChangesNoEntryThatHasAnotherAddressByThen)
{
    World w;
    w.store().add(w.files(2));
    w.store().refreshLocationsInBackground();
    moveFile(w, w.home() + "/file0", w.home() + "/moved");
    moveFile(w, w.home() + "/file1", w.home() + "/moved too");
    auto renamed = w.store().items.value();
    renamed[0].url = w.file("renamed");
    w.store().items.set(renamed);
    w.queue.settle();
    EXPECT_EQ(w.urls(), (QList { w.file("renamed"), w.file("moved too") }));
    w.store().refreshLocationsInBackground();
    w.end(); // The store itself is gone.
    w.queue.settle();
}
