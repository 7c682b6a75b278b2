#include "platform/linux/files/InodeSearch.h"
#include "platform/files/BookmarkWorld.h"
#include "platform/linux/files/OutsideSearches.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using InodeSearchTest = FollowingTest;
using OutsideSearchesTest = FollowingTest;

constexpr InodeSearch::Limits unlimited { 60, 1'000'000 };

/// The folder "root" with a search that may be told to end.
struct SearchWorld : BookmarkWorld
{
    InodeSearch search(const QList<FileIdentity> &wanted, InodeSearch::Limits limits = unlimited,
                       const QList<QByteArray> &first = {}) const
    {
        InodeSearch search(wanted, limits, cancelled);
        search.walk(path(""), *MountTable("/proc/self/mountinfo").current(),
                    InodeSearch::Subvolumes::Skip, first);
        return search;
    }
    FileIdentity make(const QByteArray &name) const
    {
        makeFolder(FilePath::parent(path(name)));
        file(name);
        return identityOf(path(name));
    }
    /// The identity of a file that was there and is no more.
    FileIdentity gone() const
    {
        const FileIdentity result = make("gone");
        ::unlink(path("gone").constData());
        return result;
    }

    std::atomic<bool> cancelled = false;
};

class TestMount
{
public:
    TestMount(const char *source, const QByteArray &target, const char *type,
              unsigned long flags = 0, const QByteArray &options = {})
        : m_target(target)
    {
        makeFolder(target);
        done = ::mount(source, target.constData(), type, flags, options.constData()) == 0;
    }
    TestMount(const TestMount &) = delete;
    TestMount &operator=(const TestMount &) = delete;
    ~TestMount()
    {
        if (done)
            ::umount2(m_target.constData(), MNT_DETACH);
    }

    bool done;

private:
    const QByteArray m_target;
};

}

TEST_F(InodeSearchTest, ClaimsOnlyWhatItHasSeen)
{
    SearchWorld world;
    for (int i = 0; i < 400; ++i)
        world.make(QByteArray::number(i % 20) + '/' + QByteArray::number(i));
    const FileIdentity gone = world.gone();
    const FileIdentity there = identityOf(world.path("7/7"));
    FileIdentity before = there;
    before.birthNanoseconds ^= 1;
    const auto all = world.search({ gone, there, before, there });
    EXPECT_TRUE(all.isWhole());
    EXPECT_GE(all.entries(), 420);
    EXPECT_EQ(all.found(), (QHash<FileIdentity, QByteArray> { { there, world.path("7/7") } }));
    FileIdentity unborn = there;
    unborn.hasBirth = false;
    EXPECT_TRUE(world.search({ unborn }).found().isEmpty());
    EXPECT_FALSE(world.search({ unborn }).isWhole()) << "It may have been the one.";

    const auto some = world.search({ gone }, { 60, 100 });
    EXPECT_FALSE(some.isWhole());
    EXPECT_LT(some.entries(), 200);
    EXPECT_FALSE(world.search({ gone }, { 0, 1'000'000 }).isWhole());
    const auto early = world.search({ gone, there }, unlimited, { world.path("7") });
    EXPECT_EQ(early.entries(), all.entries()) << "nothing is read twice";
    EXPECT_EQ(world.search({ there }, unlimited, { world.path("7") }).entries(), 20);

    InodeSearch near({ there, gone }, unlimited, world.cancelled);
    near.lookInto("/nowhere");
    near.lookInto(world.path("7"));
    EXPECT_EQ(near.found().value(there), world.path("7/7"));
    EXPECT_EQ(near.entries(), 20) << "Only the folder that was to be looked into.";
    InodeSearch nowhere({ gone }, unlimited, world.cancelled);
    nowhere.walk("/nowhere", Mounts());
    EXPECT_FALSE(nowhere.isWhole());
    world.cancelled = true;
    EXPECT_FALSE(world.search({ gone }).isWhole());
}

TEST_F(InodeSearchTest, KnowsWhatUnreadableFoldersMayHold)
{
    const SearchWorld world;
    const FileIdentity file = world.make("folder/file");
    const FileIdentity gone = world.gone();
    const QByteArray folder = world.path("folder");
    const uid_t me = geteuid();
    const uid_t user = me == 0 ? 65534 : me; // No mode keeps root out.
    for (const QByteArray &path : { world.folder.path().toUtf8(), world.path(""), folder })
        ASSERT_EQ(chown(path.constData(), user, static_cast<gid_t>(-1)), 0);
    const struct
    {
        const char *what;
        FileIdentity wanted;
        qsizetype found;
        mode_t mode;
        bool whole;
        uid_t owner = 0; // 0: the user.
    } cases[] = {
        { "readable", file, 1, 0700, true },
        { "closed: the user can have put nothing there", gone, 0, 0, true },
        { "searchable: may hold anything", gone, 0, 0300, false },
        { "another's, searchable and without folders", gone, 0, 0711, true, 12345 },
        { "only names: not that number", gone, 0, 0400, true },
        { "only names: that number, of whatever file", file, 0, 0400, false },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        if (c.owner != 0 && me != 0)
            continue;
        const uid_t owner = c.owner == 0 ? user : c.owner;
        ASSERT_EQ(chown(folder.constData(), owner, static_cast<gid_t>(-1)), 0);
        ASSERT_EQ(chmod(folder.constData(), c.mode), 0);
        ASSERT_EQ(seteuid(user), 0);
        const auto result = world.search({ c.wanted });
        ASSERT_EQ(seteuid(me), 0);
        EXPECT_EQ(result.found().size(), c.found);
        EXPECT_EQ(result.isWhole(), c.whole);
    }
    chmod(folder.constData(), 0700);
}

TEST_F(InodeSearchTest, StaysOnItsFileSystem)
{
    const SearchWorld world;
    const FileIdentity outside = world.make("../outside/file");
    const FileIdentity inside = world.make("a/file");
    ::symlink("../outside", world.path("link").constData());
    // One whose server never answers; the table of the second walk does not tell of it either.
    const int server = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    const TestMount hung("hung", world.path("hung"), "fuse", 0,
                         "fd=" + QByteArray::number(server)
                             + ",rootmode=40000,user_id=0,group_id=0");
    if (!hung.done)
        GTEST_SKIP() << "Mounting is not allowed here.";
    const TestMount other("none", world.path("other mount"), "tmpfs");
    const TestMount same(world.path("../outside").constData(), world.path("same mount"), nullptr,
                         MS_BIND);
    ASSERT_TRUE(other.done && same.done);
    std::atomic<bool> ended = false;
    const FileIdentity apart = world.make("other mount/file");
    std::thread walking([&] {
        for (const Mounts &mounts : { *MountTable("/proc/self/mountinfo").current(), Mounts() }) {
            InodeSearch search({ inside, apart, outside }, unlimited, world.cancelled);
            search.walk(world.path(""), mounts);
            EXPECT_EQ(search.found().keys(), QList { inside });
            EXPECT_TRUE(search.isWhole());
            EXPECT_EQ(
                QSet(search.covered().begin(), search.covered().end()),
                (QSet { world.path("other mount"), world.path("same mount"), world.path("hung") }));
        }
        ended = true;
    });
    for (int i = 0; i < 500 && !ended; ++i)
        ::usleep(10000);
    EXPECT_TRUE(ended);
    ::close(server); // Ends the wait of one that waits.
    walking.join();
}

TEST_F(InodeSearchTest, ProvesNothingWhereNumbersLie)
{
    const SearchWorld world;
    const FileIdentity gone = world.gone();
    const QByteArray in = world.folder.path().toUtf8();
    const TestMount lower("none", in + "/lower", "tmpfs");
    if (!lower.done)
        GTEST_SKIP() << "Mounting is not allowed here.";
    for (const char *name : { "/lower/folder", "/upper", "/work" })
        makeFolder(in + name);
    const TestMount overlay("none", world.path(""), "overlay", 0,
                            "xino=off,lowerdir=" + in + "/lower,upperdir=" + in
                                + "/upper,workdir=" + in + "/work");
    if (!overlay.done)
        GTEST_SKIP() << "There are no overlays here.";
    const FileIdentity file = world.make("folder/file");
    EXPECT_EQ(world.search({ file }).found().value(file), world.path("folder/file"));
    EXPECT_FALSE(world.search({ gone }).isWhole());
}

TEST_F(OutsideSearchesTest, AnAnswerOutlivesMountsThatDoNotMatterToIt)
{
    const SearchWorld world;
    using State = OutsideSearches::Answer::State;
    const FileIdentity moved = world.make("far/away");
    const FileIdentity gone = world.gone();
    makeFolder(world.path("media"));
    const auto searches = std::make_shared<OutsideSearches>(unlimited, 0.1);
    quint64 number = 0;
    const auto table = [&](const QList<QByteArray> &points) {
        QByteArray lines;
        for (const QByteArray &point : points)
            lines += "9 1 0:1 / " + point + " rw - ext4 x rw\n";
        return std::make_shared<const Mounts>(lines, ++number);
    };
    Volume volume;
    volume.device = gone.device;
    volume.roots = { world.path("") };
    const QByteArray root = world.path("");
    const QByteArray media = world.path("media");
    searches->start(volume, table({ root, media }), { moved, gone }, {});
    const auto state = [&](const FileIdentity &file, const QList<QByteArray> &points) {
        return searches->answerFor(file, volume, *table(points)).state;
    };
    for (int i = 0; i < 500 && state(gone, { root, media }) == State::Unknown; ++i)
        ::usleep(10000);
    EXPECT_EQ(state(gone, { root, media, "/elsewhere" }), State::Absent);
    EXPECT_EQ(state(gone, { root }), State::Absent) << "nothing was under the mount";
    volume.roots.append("/another part of it");
    EXPECT_EQ(state(gone, { root }), State::Unknown);
    volume.roots.removeLast();
    world.file("media/came to light");
    EXPECT_EQ(state(gone, { root }), State::Unknown);
    volume.roots.append("/another part of it");
    EXPECT_EQ(state(moved, {}), State::Found) << "a look there tells";
}
