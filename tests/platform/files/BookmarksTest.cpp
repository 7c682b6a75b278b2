#include "platform/files/BookmarkWorld.h"
#include "platform/linux/files/BookmarkCoding.h"
#include "platform/linux/files/FolderMemory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include <poll.h>
#include <sys/fsuid.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

using BookmarksTest = FollowingTest;
using Outcome = BookmarkAnswer::Outcome;
using Bound = Bookmarks::Bound;

/// Makes files until one gets the former one's number, as soon as the clock by
/// which the kernel dates files has passed its birth: the two could not be told
/// apart otherwise. The clock advances every few milliseconds.
void reuseNumber(const BookmarkWorld &world, const QByteArray &folder, const FileIdentity &former)
{
    const auto isPast = [&] {
        timespec now = {};
        ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
        return std::pair<qint64, qint64>(now.tv_sec, now.tv_nsec)
            > std::pair<qint64, qint64>(former.birthSeconds, former.birthNanoseconds);
    };
    while (!isPast())
        std::this_thread::yield();
    for (int i = 0; i < 64; ++i) {
        const QByteArray name = folder + "/new" + QByteArray::number(i);
        world.file(name);
        if (identityOf(world.path(name)).inode == former.inode)
            return;
    }
}

/// What happens to "home/one/a" (or `of`) and where the entry is afterwards.
struct Story
{
    const char *what;
    std::function<void(const BookmarkWorld &)> happens;
    QByteArray now; // Empty: gone. A folder's ends with a slash.
    bool trashed = false;
    bool far = false; // Only a walk finds it.
    QByteArray of = "home/one/a";
    std::function<void(const BookmarkWorld &)> before = [](const BookmarkWorld &) {};
};

const QByteArray oddName = "home/one/n\xe4me\xff %41\n";

QList<Story> stories()
{
    const QByteArray trash = "home/.local/share/Trash/files/a";
    const QByteArray uid = QByteArray::number(::getuid());
    const auto moves = [](const QByteArray &to, const QByteArray &from = "home/one/a") {
        return [=](const BookmarkWorld &w) {
            makeFolder(FilePath::parent(w.path(to)));
            w.move(from, to);
        };
    };
    const auto makesFolder = [](const BookmarkWorld &w) { makeFolder(w.path("home/one/f")); };
    return {
        { "nothing", [](const BookmarkWorld &) {}, "home/one/a" },
        { "renamed", moves("home/one/b"), "home/one/b" },
        { "moved into an unknown folder", moves("elsewhere/x/y/z"), "elsewhere/x/y/z", false,
          true },
        { "renamed twice",
          [=](const BookmarkWorld &w) {
              moves("home/one/b")(w);
              moves("home/one/c", "home/one/b")(w);
          },
          "home/one/c" },
        { "its folder renamed", moves("home/three", "home/one"), "home/three/a" },
        { "a folder above it renamed", moves("home/zwei", "home/two"), "home/zwei/deep/b", false,
          false, "home/two/deep/b", [](const BookmarkWorld &w) { w.file("home/two/deep/b"); } },
        { "a folder renamed", moves("home/two/g", "home/one/f"), "home/two/g/", false, true,
          "home/one/f", makesFolder },
        { "a name that is not UTF-8", moves("home/two/\xfe%", oddName), "home/two/\xfe%", false,
          true, oddName, [](const BookmarkWorld &w) { w.file(oddName); } },
        { "a link to nowhere", moves("home/two/l", "home/one/l"), "home/two/l", false, true,
          "home/one/l",
          [](const BookmarkWorld &w) { ::symlink("/nowhere", w.path("home/one/l").constData()); } },
        { "replaced by an editor",
          [](const BookmarkWorld &w) {
              w.file("home/one/temporary");
              w.move("home/one/temporary", "home/one/a");
          },
          "home/one/a" },
        { "replaced by an editor that keeps the former one",
          [](const BookmarkWorld &w) {
              w.move("home/one/a", "home/one/a~");
              w.file("home/one/a");
          },
          "home/one/a" },
        { "deleted", [](const BookmarkWorld &w) { ::unlink(w.path("home/one/a").constData()); },
          "" },
        { "deleted, and its number given to another file",
          [](const BookmarkWorld &w) {
              const auto former = identityOf(w.path("home/one/a"));
              ::unlink(w.path("home/one/a").constData());
              reuseNumber(w, "home/two", former);
          },
          "" },
        { "one of its two names deleted",
          [](const BookmarkWorld &w) { ::unlink(w.path("home/one/a").constData()); },
          "home/two/other", false, true, "home/one/a",
          [](const BookmarkWorld &w) {
              ::link(w.path("home/one/a").constData(), w.path("home/two/other").constData());
          } },
        { "thrown away", moves(trash), trash, true },
        { "thrown away in a volume's trash", moves(".Trash-" + uid + "/files/a"),
          ".Trash-" + uid + "/files/a", true },
        { "thrown away in a volume's common trash", moves(".Trash/" + uid + "/files/a"),
          ".Trash/" + uid + "/files/a", true },
        { "thrown away by another system", moves("x/.Trashes/501/a"), "x/.Trashes/501/a", true,
          true },
        { "moved to what is no trash", moves("home/.Trash-" + uid + "/my.Trash/a"),
          "home/.Trash-" + uid + "/my.Trash/a", false, true },
        { "renamed as link and unlink",
          [](const BookmarkWorld &w) {
              ::link(w.path("home/one/a").constData(), w.path("home/one/b").constData());
              ::unlink(w.path("home/one/a").constData());
          },
          "home/one/b" },
    };
}

}

TEST_F(BookmarksTest, AFileIsFollowedWhateverTheUserDoesToIt)
{
    // The first world's folders are never watched; the second one's always are. One for all
    // stories, since the kernel takes 20 ms to end a watch.
    for (const Bound bound : { Bound::Brief, Bound::Background }) {
        const BookmarkWorld world;
        for (const Story &story : stories()) {
            SCOPED_TRACE(testing::Message()
                         << story.what << (bound == Bound::Brief ? ", brief" : ""));
            world.begin();
            story.before(world);
            const BookmarkQuery query = world.query(story.of);
            ASSERT_TRUE(query.bookmark);
            ASSERT_EQ(world.check(query, bound).outcome, Outcome::Found);
            const auto identity = identityOf(world.path(story.of));
            story.happens(world);
            const BookmarkAnswer answer
                = bound == Bound::Brief ? world.check(query, bound) : world.checkToTheEnd(query);
            if (story.now.isEmpty() || (story.far && bound == Bound::Brief)) {
                EXPECT_EQ(answer.outcome,
                          bound == Bound::Brief ? Outcome::Missing : Outcome::Absent);
                continue;
            }
            ASSERT_EQ(answer.outcome, Outcome::Found);
            const auto kind
                = story.now.endsWith('/') ? FilePath::Kind::Directory : FilePath::Kind::File;
            EXPECT_EQ(answer.url, FilePath::toUrl(world.path(story.now), kind));
            EXPECT_EQ(answer.trashed, story.trashed);
            const bool same
                = answer.url == query.url && identityOf(world.path(story.now)) == identity;
            ASSERT_EQ(answer.newBookmark.has_value(), !same);
            const BookmarkAnswer next
                = world.check({ answer.url, same ? query.bookmark : answer.newBookmark }, bound);
            EXPECT_EQ(next.outcome, Outcome::Found);
            EXPECT_EQ(next.url, answer.url);
            EXPECT_FALSE(next.newBookmark);
        }
    }
}

TEST_F(BookmarksTest, TheKernelsWordIsAHintAndNoProof)
{
    LinuxBookmarks::Bounds bounds = quick();
    bounds.near.seconds = bounds.outside.seconds = 0; // Only what was told can find a file.
    const BookmarkWorld world(bounds);
    world.file("home/two/b");
    const QList<BookmarkQuery> queries { world.query("home/one/a"), world.query("home/two/b") };
    world.bookmarks->resolve(queries, Bound::Background);
    world.move("home/one/a", "home/two/c");
    world.move("home/two/c", "home/one/d"); // Between the folders of different entries.
    ::unlink(world.path("home/two/b").constData());
    for (int i = 0; i < 20; ++i) { // Nor is a search that came to its limits any.
        const auto answers = world.bookmarks->resolve(queries, Bound::Background);
        EXPECT_EQ(answers[0].url, FilePath::toUrl(world.path("home/one/d")));
        EXPECT_EQ(answers[1].outcome, Outcome::Missing);
    }
    const BookmarkQuery d = world.query("home/one/d");
    world.check(d);
    world.move("home/one", "home/former");
    makeFolder(world.path("home/one"));
    world.file("home/one/d");
    EXPECT_EQ(world.check(d).url, d.url) << "something at its address counts";
}

TEST_F(BookmarksTest, WhatTheKernelTellsIsRememberedWithinABound)
{
    const BookmarkWorld world;
    FolderMemory memory(1, 64);
    memory.watch({ world.path("home/one"), world.path("home/two") });
    const auto rename = [&](const QByteArray &from, const QByteArray &to) {
        world.move("home/one/" + from, "home/one/" + to);
        memory.drain();
    };
    for (int i = 0; i < 500; ++i) {
        const QByteArray name = i % 2 == 0 ? "b" : "c" + QByteArray::number(i);
        rename("a", name); // Of one name again and again.
        rename(name, "a");
        EXPECT_LE(memory.moves(), 64);
    }
    rename("a", "last");
    EXPECT_TRUE(memory.placesOf(world.path("home/one/a")).contains(world.path("home/one/last")));
    EXPECT_EQ(memory.placesOf(world.path("home/two/a")), QList<QByteArray>());
}

TEST_F(BookmarksTest, AFileThatMovesWhileItIsSearchedForIsNotAbsent)
{
    LinuxBookmarks::Bounds bounds = quick();
    bounds.walksApart = 1;
    const BookmarkWorld world(bounds);
    makeFolder(world.path("far"));
    const BookmarkQuery query = world.query("home/one/a");
    world.move("home/one/a", "../away"); // As if it were in a folder that is still to be read.
    const int events = ::inotify_init1(IN_CLOEXEC);
    ::inotify_add_watch(events, world.path("far").constData(), IN_CLOSE_NOWRITE | IN_ONLYDIR);
    std::thread mover([&] {
        pollfd wait = { events, POLLIN, 0 };
        ::poll(&wait, 1, 10'000);
        world.move("../away", "far/b"); // Where the walk has just been.
    });
    EXPECT_EQ(world.checkToTheEnd(query).url, FilePath::toUrl(world.path("far/b")));
    mover.join();
    ::close(events);
    // One that was absent and came back is searched for anew when it goes again.
    world.move("far/b", "../away");
    EXPECT_EQ(world.checkToTheEnd(query).outcome, Outcome::Absent);
    world.move("../away", "home/one/a");
    world.check(query);
    world.move("home/one/a", "far/c");
    EXPECT_EQ(world.checkToTheEnd(query).url, FilePath::toUrl(world.path("far/c")));
}

TEST_F(BookmarksTest, WhereNoWalkCanProveItTheLookNearDoes)
{
    const BookmarkWorld world(quick(), "vfat");
    const QList<BookmarkQuery> queries { world.query("home/one/a"), world.query("home/two/deep") };
    ::unlink(world.path("home/one/a").constData());
    world.move("home/two/deep", "home/two/renamed");
    EXPECT_EQ(world.bookmarks->resolve(queries, Bound::Brief)[0].outcome, Outcome::Missing);
    EXPECT_EQ(world.checkToTheEnd(queries[0]).outcome, Outcome::Absent);
    EXPECT_EQ(world.checkToTheEnd(queries[1]).outcome, Outcome::Found);
}

TEST_F(BookmarksTest, WithoutAUsableBookmarkTheAddressCounts)
{
    BookmarkWorld world;
    const QUrl there = FilePath::toUrl(world.path("home/one/a"));
    const QUrl nowhere = FilePath::toUrl(world.path("home/one/b"));
    const QByteArray whole = *world.query("home/one/a").bookmark;
    const auto made = world.check({ there, std::nullopt });
    EXPECT_EQ(made.outcome, Outcome::Found);
    EXPECT_EQ(made.newBookmark, whole);
    EXPECT_EQ(world.check({ nowhere, std::nullopt }).outcome, Outcome::Absent);
    EXPECT_EQ(world.check({ QUrl(), std::nullopt }).outcome, Outcome::Absent);
    EXPECT_EQ(world.check({ QUrl(), whole }).url, there);
    for (const QByteArray &damaged : { QByteArray(""), QByteArray("x"), whole.left(30) }) {
        EXPECT_EQ(world.check({ there, damaged }).outcome, Outcome::Found);
        EXPECT_EQ(world.check({ there, damaged }).url, there);
        EXPECT_EQ(world.check({ nowhere, damaged }).outcome, Outcome::Absent);
    }
    // The address was changed without the bookmark, in the same check as its former one.
    world.move("home/one/a", "home/one/b");
    const auto both
        = world.bookmarks->resolve({ { there, whole }, { nowhere, whole } }, Bound::Background);
    for (const BookmarkAnswer &answer : both) {
        EXPECT_EQ(answer.outcome, Outcome::Found);
        EXPECT_EQ(answer.url, nowhere);
        EXPECT_TRUE(answer.newBookmark);
    }
    // Without a table of mounts nobody knows which file systems are there.
    QFile::remove(world.folder.filePath(QStringLiteral("mountinfo")));
    world.restart();
    world.move("home/one/b", "../away");
    EXPECT_EQ(world.check({ nowhere, whole }).outcome, Outcome::Missing);
}

TEST_F(BookmarksTest, AFolderThatMustNotBeReadHidesNothing)
{
    BookmarkWorld world;
    const BookmarkQuery query = world.query("home/one/a");
    ::chmod(world.folder.path().toUtf8().constData(), 0755);
    for (const char *folder : { "", "home" })
        ::chmod(world.path(folder).constData(), 0755);
    ::chmod(world.path("home/one").constData(), 0);
    // Root may read it: this thread looks at files as nobody does.
    const auto user = static_cast<uid_t>(::setfsuid(::geteuid() == 0 ? 65534 : ::geteuid()));
    const BookmarkAnswer answer = world.check(query);
    ::setfsuid(user);
    ::chmod(world.path("home/one").constData(), 0755);
    EXPECT_EQ(answer.outcome, Outcome::Found);
    EXPECT_EQ(answer.url, query.url);
    EXPECT_FALSE(answer.newBookmark);
}

TEST_F(BookmarksTest, AFileSystemIsKnownByItsOwnNumberToo)
{
    BookmarkWorld world;
    const BookmarkQuery query = world.query("home/one/a");
    auto record = *BookmarkCoding::decode(*query.bookmark);
    if (record.fileSystem == 0)
        GTEST_SKIP() << "the file system of the temporary folder has no number";
    record.identity.device = makedev(4000, 17);
    const BookmarkQuery renumbered = { query.url, BookmarkCoding::encode(record) };
    EXPECT_EQ(world.check(renumbered).newBookmark, query.bookmark);
    world.move("home/one/a", "elsewhere");
    EXPECT_EQ(world.checkToTheEnd(renumbered).url, FilePath::toUrl(world.path("elsewhere")));
    // Another file system has the device's number, or none has either: it is not there. Early in
    // a run it may still come.
    const auto device = identityOf(world.path("elsewhere")).device;
    record.fileSystem ^= 1;
    for (const double late : { 0., 60. }) {
        world.bounds.lateVolumes = late;
        world.restart();
        for (const dev_t other : { device, makedev(4000, 17) }) {
            record.identity.device = other;
            const BookmarkQuery absent = { query.url, BookmarkCoding::encode(record) };
            EXPECT_EQ(world.check(absent).outcome,
                      late > 0 ? Outcome::Unanswered : Outcome::Absent);
            EXPECT_EQ(world.check(absent, Bound::Brief).outcome, Outcome::Unanswered);
        }
        // Without a bookmark its folder tells: missing, empty as a mount point, or neither.
        for (const char *name : { "media/disk/x", "home/one/x", "home/x" }) {
            const BookmarkQuery bare = { FilePath::toUrl(world.path(name)), std::nullopt };
            const bool mayCome = late > 0 && QByteArray(name) != "home/x";
            EXPECT_EQ(world.check(bare, Bound::Brief).outcome,
                      mayCome ? Outcome::Unanswered : Outcome::Absent)
                << name;
        }
    }
}

namespace {

/// A look that does not come back before it is let go.
struct Server
{
    FileLook look(const QByteArray &path)
    {
        ++looks;
        answers.wait(false);
        return lookAt(path);
    }
    void setAnswers(bool now)
    {
        answers = now;
        answers.notify_all();
    }

    std::atomic<bool> answers = true;
    std::atomic<int> looks = 0;
};

}

TEST_F(BookmarksTest, ADeadNetworkMountHoldsNothingButOneThread)
{
    const auto server = std::make_shared<Server>();
    LinuxBookmarks::Bounds bounds = quick();
    bounds.brief = 0.01;
    bounds.remote = 0.01;
    bounds.remoteLook = [server](const QByteArray &path) { return server->look(path); };
    BookmarkWorld world(bounds);
    makeFolder(world.path("nas"));
    makeFolder(world.path("auto"));
    for (const char *name : { "nas/x", "nas/y", "auto/z" })
        world.file(name);
    world.mount(world.path("nas"), "nfs4", identityOf(world.path("nas")).device);
    world.mount(world.path("auto"), "autofs", makedev(0, 99));
    ::symlink("../nas/.", world.path("home/zlink").constData());
    const auto url = [&](const char *name) { return FilePath::toUrl(world.path(name)); };

    server->setAnswers(false);
    QList<BookmarkQuery> queries = { world.query("home/one/a") };
    for (const char *name : { "nas/x", "nas/y", "home/zlink/y", "auto/z", "nas/none" }) {
        const Bookmarked made = world.bookmarks->make(url(name));
        EXPECT_EQ(made.url, url(name));
        EXPECT_FALSE(made.bookmark);
        queries.append({ made.url, made.bookmark });
    }
    EXPECT_EQ(server->looks, 0);
    for (const Bound bound : { Bound::Brief, Bound::Background, Bound::Brief }) {
        const auto answers = world.bookmarks->resolve(queries, bound);
        EXPECT_EQ(answers[0].outcome, Outcome::Found);
        for (int i = 1; i < answers.size(); ++i)
            EXPECT_EQ(answers[i].outcome, Outcome::Unanswered);
    }
    EXPECT_LE(server->looks, 1);

    server->setAnswers(true);
    EXPECT_EQ(world.checkToTheEnd(queries.last()).outcome, Outcome::Absent);
    for (int i = 1; i <= 3; ++i) {
        const BookmarkAnswer answer = world.checkToTheEnd(queries[i]);
        EXPECT_EQ(answer.outcome, Outcome::Found);
        ASSERT_TRUE(answer.newBookmark);
        const BookmarkAnswer again = world.checkToTheEnd({ answer.url, answer.newBookmark });
        EXPECT_EQ(again.outcome, Outcome::Found);
        EXPECT_FALSE(again.newBookmark);
    }
    EXPECT_EQ(world.check(queries[4]).outcome, Outcome::Unanswered) << "is not mounted by looking";
    const BookmarkAnswer y = world.checkToTheEnd(queries[2]);
    world.move("nas/y", "nas/renamed");
    EXPECT_EQ(world.checkToTheEnd({ y.url, y.newBookmark }).url, url("nas/renamed"));
    world.move("nas/renamed", "nas/y");
    // The program ends during a check: it keeps what it needs, and nobody waits for it.
    server->setAnswers(false);
    const int looks = server->looks;
    LinuxBookmarks *const checked = world.bookmarks.get();
    std::thread check([&] { checked->resolve(queries, Bound::Background); });
    while (server->looks == looks)
        std::this_thread::yield();
    world.bookmarks.reset();
    check.join();
    server->setAnswers(true);
}

TEST_F(BookmarksTest, ChecksAndAdditionsMayComeFromSeveralThreads)
{
    BookmarkWorld world;
    QList<BookmarkQuery> queries;
    for (int i = 0; i < 50; ++i) {
        const QByteArray name = (i % 2 == 0 ? "home/one/" : "home/two/") + QByteArray::number(i);
        world.file(name);
        queries.append(world.query(name));
    }
    std::thread background([&] {
        for (int i = 0; i < 30; ++i)
            world.bookmarks->resolve(queries, Bound::Background);
    });
    for (int i = 0; i < 30; ++i) {
        world.move("home/one/0", "home/two/moved");
        const auto answers = world.bookmarks->resolve(queries, Bound::Brief);
        EXPECT_EQ(answers[0].url, FilePath::toUrl(world.path("home/two/moved")));
        EXPECT_EQ(answers[1].outcome, Outcome::Found);
        world.move("home/two/moved", "home/one/0");
        EXPECT_TRUE(world.bookmarks->make(queries[i].url).bookmark);
    }
    background.join();
}
