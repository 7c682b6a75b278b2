#include "platform/BookmarkWorld.h"
#include "platform/linux/BookmarkCoding.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

using Outcome = BookmarkAnswer::Outcome;
using Bound = Bookmarks::Bound;

/// No search within a check, so that only what the kernel told can find a file.
LinuxBookmarks::Bounds withoutSearch()
{
    LinuxBookmarks::Bounds bounds;
    for (InodeSearch::Limits *limits : { &bounds.inCheck, &bounds.nearby, &bounds.outside })
        limits->seconds = 0;
    return bounds;
}

bool hasBirthTimes(const BookmarkWorld &world)
{
    return identityOf(world.path("home/one/a"))->hasBirth;
}

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
        if (identityOf(world.path(name))->inode == former.inode)
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
        { "moved into an unknown folder", moves("elsewhere/x/y/z"), "elsewhere/x/y/z" },
        { "renamed twice",
          [=](const BookmarkWorld &w) {
              moves("home/one/b")(w);
              moves("home/one/c", "home/one/b")(w);
          },
          "home/one/c" },
        { "its folder renamed", moves("home/three", "home/one"), "home/three/a" },
        { "a folder renamed", moves("home/two/g", "home/one/f"), "home/two/g/", false, "home/one/f",
          makesFolder },
        { "a name that is not UTF-8", moves("home/two/\xfe%", oddName), "home/two/\xfe%", false,
          oddName, [](const BookmarkWorld &w) { w.file(oddName); } },
        { "a link to nowhere", moves("home/two/l", "home/one/l"), "home/two/l", false, "home/one/l",
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
              const auto former = *identityOf(w.path("home/one/a"));
              ::unlink(w.path("home/one/a").constData());
              reuseNumber(w, "home/two", former);
          },
          "" },
        { "one of its two names deleted",
          [](const BookmarkWorld &w) { ::unlink(w.path("home/one/a").constData()); },
          "home/two/other", false, "home/one/a",
          [](const BookmarkWorld &w) {
              ::link(w.path("home/one/a").constData(), w.path("home/two/other").constData());
          } },
        { "thrown away", moves(trash), trash, true },
        { "thrown away in a volume's trash", moves(".Trash-" + uid + "/files/a"),
          ".Trash-" + uid + "/files/a", true },
        { "thrown away in a volume's common trash", moves(".Trash/" + uid + "/files/a"),
          ".Trash/" + uid + "/files/a", true },
        { "moved to what is no trash", moves("home/.Trash-" + uid + "/a"),
          "home/.Trash-" + uid + "/a" },
    };
}

}

TEST(BookmarksTest, AFileIsFollowedWhateverTheUserDoesToIt)
{
    // The first world's folders are never watched; the second one's always are. One for all
    // stories, since the kernel takes 20 ms to end a watch.
    for (const Bound bound : { Bound::Brief, Bound::Background }) {
        LinuxBookmarks::Bounds bounds; // However slow the machine is.
        bounds.brief = bounds.inCheck.seconds = 20;
        const BookmarkWorld world(bounds);
        if (!hasBirthTimes(world))
            GTEST_SKIP() << "no birth times on the file system of the temporary folder";
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
            const BookmarkAnswer answer = world.check(query, bound);
            if (story.now.isEmpty()) {
                EXPECT_EQ(answer.outcome, Outcome::Absent);
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

TEST(BookmarksTest, TheKernelsWordIsEnoughWithinWatchedFolders)
{
    BookmarkWorld world(withoutSearch());
    world.file("home/two/b");
    world.file("home/two/linked");
    ::link(world.path("home/two/linked").constData(), world.path("home/two/name").constData());
    const BookmarkQuery a = world.query("home/one/a");
    const BookmarkQuery b = world.query("home/two/b");
    const BookmarkQuery linked = world.query("home/two/linked");
    world.bookmarks->resolve({ a, b, linked }, Bound::Background);

    world.move("home/one/a", "home/two/c");
    world.move("home/two/c", "home/one/d"); // Between the folders of different entries.
    ::unlink(world.path("home/two/b").constData());
    ::unlink(world.path("home/two/linked").constData());
    const auto answers = world.bookmarks->resolve({ a, b, linked }, Bound::Background);
    EXPECT_EQ(answers[0].url, FilePath::toUrl(world.path("home/one/d")));
    EXPECT_EQ(answers[1].outcome, Outcome::Absent);
    EXPECT_EQ(answers[2].outcome, Outcome::Missing) << "lives on under its other name";

    const BookmarkQuery d = { answers[0].url, answers[0].newBookmark };
    world.check(d);
    world.move("home/one/d", "home/d"); // Out of what is watched.
    EXPECT_EQ(world.check(d).outcome, Outcome::Missing);

    // What was told of a folder's former place is no word about what is there now.
    world.move("home/d", "home/one/d");
    world.check(d);
    world.move("home/one", "home/former");
    makeFolder(world.path("home/one"));
    ::unlink(world.path("home/former/d").constData());
    EXPECT_NE(world.check(d).outcome, Outcome::Found);
}

TEST(BookmarksTest, ASearchThatHasNotEndedProvesNothingAndGoesOnOutside)
{
    LinuxBookmarks::Bounds bounds;
    bounds.inCheck.seconds = 0;
    bounds.nearby.seconds = 0;
    BookmarkWorld world(bounds);
    if (!hasBirthTimes(world))
        GTEST_SKIP() << "no birth times on the file system of the temporary folder";
    const BookmarkQuery moved = world.query("home/one/a");
    world.file("home/two/b");
    const BookmarkQuery deleted = world.query("home/two/b");
    world.move("home/one/a", "home/two/deep/there");
    ::unlink(world.path("home/two/b").constData());
    EXPECT_EQ(world.check(moved, Bound::Brief).outcome, Outcome::Missing);
    const auto answers = world.bookmarks->resolve({ moved, deleted }, Bound::Background);
    EXPECT_EQ(answers[0].outcome, Outcome::Missing);
    EXPECT_EQ(answers[1].outcome, Outcome::Missing);
    EXPECT_EQ(world.checkToTheEnd(moved).url, FilePath::toUrl(world.path("home/two/deep/there")));
    EXPECT_EQ(world.checkToTheEnd(deleted).outcome, Outcome::Absent);
}

TEST(BookmarksTest, ASearchThatCameToItsLimitsRests)
{
    BookmarkWorld world(withoutSearch());
    const BookmarkQuery moved = world.query("home/one/a");
    world.move("home/one/a", "elsewhere");
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(world.check(moved).outcome, Outcome::Missing);
}

TEST(BookmarksTest, AFolderRenamedInItsPlaceIsFoundBeforeTheSearchOfEverything)
{
    LinuxBookmarks::Bounds bounds;
    bounds.inCheck.entries = 100;
    const BookmarkWorld world(bounds);
    if (!hasBirthTimes(world))
        GTEST_SKIP() << "no birth times on the file system of the temporary folder";
    for (int i = 0; i < 200; ++i) // More than the search may read, before it comes to the home.
        makeFolder(world.path("other " + QByteArray::number(i)));
    world.file("home/two/deep/b");
    const QList<BookmarkQuery> queries { world.query("home/one/a"),
                                         world.query("home/two/deep/b") };
    world.move("home/one", "home/uno");
    world.move("home/two", "home/zwei");
    const auto answers = world.bookmarks->resolve(queries, Bound::Brief);
    EXPECT_EQ(answers[0].url, FilePath::toUrl(world.path("home/uno/a")));
    EXPECT_EQ(answers[1].url, FilePath::toUrl(world.path("home/zwei/deep/b")));
}

TEST(BookmarksTest, WithoutAUsableBookmarkTheAddressCounts)
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
}

TEST(BookmarksTest, AFolderThatMustNotBeReadHidesNothing)
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

TEST(BookmarksTest, AFileSystemIsKnownByItsOwnNumberToo)
{
    BookmarkWorld world;
    const BookmarkQuery query = world.query("home/one/a");
    auto record = *BookmarkCoding::decode(*query.bookmark);
    if (record.fileSystem == 0 || !record.identity.hasBirth)
        GTEST_SKIP() << "the file system of the temporary folder has no number or no birth times";
    record.identity.device = makedev(4000, 17);
    const BookmarkQuery renumbered = { query.url, BookmarkCoding::encode(record) };
    EXPECT_EQ(world.check(renumbered).newBookmark, query.bookmark);
    world.move("home/one/a", "elsewhere");
    EXPECT_EQ(world.check(renumbered).url, FilePath::toUrl(world.path("elsewhere")));
    // Another file system has the device's number, or none has either.
    record.identity.device = identityOf(world.path("elsewhere"))->device;
    record.fileSystem ^= 1;
    EXPECT_EQ(world.check({ query.url, BookmarkCoding::encode(record) }).outcome, Outcome::Absent);
    record.identity.device = makedev(4000, 17);
    EXPECT_EQ(world.check({ query.url, BookmarkCoding::encode(record) }).outcome, Outcome::Absent);
}

namespace {

/// A look that does not come back before it is let go.
class Server
{
public:
    FileLook look(const QByteArray &path)
    {
        std::unique_lock lock(m_mutex);
        ++m_looks;
        m_changed.wait(lock, [this] { return m_answers; });
        return lookAt(path);
    }
    void setAnswers(bool answers)
    {
        const std::lock_guard lock(m_mutex);
        m_answers = answers;
        m_changed.notify_all();
    }
    int looks()
    {
        const std::lock_guard lock(m_mutex);
        return m_looks;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_answers = true;
    int m_looks = 0;
};

}

TEST(BookmarksTest, ADeadNetworkMountHoldsNothingButOneThread)
{
    const auto server = std::make_shared<Server>();
    LinuxBookmarks::Bounds bounds;
    bounds.brief = 0.01;
    bounds.remote = 0.01;
    bounds.remoteLook = [server](const QByteArray &path) { return server->look(path); };
    BookmarkWorld world(bounds);
    makeFolder(world.path("nas"));
    makeFolder(world.path("auto"));
    for (const char *name : { "nas/x", "nas/y", "auto/z" })
        world.file(name);
    world.mount(world.path("nas"), "nfs4", identityOf(world.path("nas"))->device);
    world.mount(world.path("auto"), "autofs", makedev(0, 99));
    ::symlink("../nas/.", world.path("home/link").constData());
    const auto url = [&](const char *name) { return FilePath::toUrl(world.path(name)); };

    server->setAnswers(false);
    QList<BookmarkQuery> queries = { world.query("home/one/a") };
    for (const char *name : { "nas/x", "nas/y", "home/link/y", "auto/z", "nas/none" }) {
        const Bookmarked made = world.bookmarks->make(url(name));
        EXPECT_EQ(made.url, url(name));
        EXPECT_FALSE(made.bookmark);
        queries.append({ made.url, made.bookmark });
    }
    EXPECT_EQ(server->looks(), 0);
    for (const Bound bound : { Bound::Brief, Bound::Background, Bound::Brief }) {
        const auto answers = world.bookmarks->resolve(queries, bound);
        EXPECT_EQ(answers[0].outcome, Outcome::Found);
        for (int i = 1; i < answers.size(); ++i)
            EXPECT_EQ(answers[i].outcome, Outcome::Unanswered);
    }
    EXPECT_LE(server->looks(), 1);

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
    // The threads keep what they need; nobody waits for them.
    server->setAnswers(false);
    world.bookmarks->resolve(queries, Bound::Brief);
    world.bookmarks.reset();
    server->setAnswers(true);
}

TEST(BookmarksTest, ChecksAndAdditionsMayComeFromSeveralThreads)
{
    BookmarkWorld world;
    if (!hasBirthTimes(world))
        GTEST_SKIP() << "no birth times on the file system of the temporary folder";
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
