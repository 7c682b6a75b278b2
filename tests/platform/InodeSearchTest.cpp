#include "platform/linux/InodeSearch.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr InodeSearch::Limits unlimited { 60, 1'000'000, 2 };

/// A folder of the test's own with whatever trees below it.
class World
{
public:
    World()
        : top(m_folder.path().toStdString())
        , root(top / "root")
    {
        m_folder.setAutoRemove(false);
        fs::create_directory(root);
    }
    World(const World &) = delete;
    World &operator=(const World &) = delete;
    ~World() // Not by QTemporaryDir, which cannot remove paths longer than the kernel takes.
    {
        EXPECT_EQ(std::system(("rm -rf '" + top.string() + "'").c_str()), 0);
    }

    fs::path file(const fs::path &name) const
    {
        fs::create_directories((root / name).parent_path());
        std::ofstream(root / name) << name.string();
        return root / name;
    }

    InodeSearch::Result search(const QList<FileIdentity> &wanted,
                               InodeSearch::Limits limits = unlimited,
                               const QList<QByteArray> &first = {}) const
    {
        return InodeSearch::run(QByteArray::fromStdString(root.string()), first, wanted, limits,
                                cancelled);
    }

    std::atomic<bool> cancelled = false;

private:
    QTemporaryDir m_folder;

public:
    const fs::path top;
    const fs::path root;
};

FileIdentity identity(const fs::path &path)
{
    const auto result = identityOf(QByteArray::fromStdString(path.string()));
    EXPECT_TRUE(result && result->hasBirth) << path;
    return result.value_or(FileIdentity());
}

/// The identity of a file that was there and is no more.
FileIdentity goneFrom(const World &world)
{
    const fs::path path = world.file("gone");
    const FileIdentity result = identity(path);
    fs::remove(path);
    return result;
}

std::string pathOf(const InodeSearch::Result &result, const FileIdentity &wanted)
{
    for (const auto &[found, path] : result.found) {
        if (found == wanted)
            return path.toStdString();
    }
    return {};
}

class Mount
{
public:
    Mount(const char *source, fs::path target, const char *type, unsigned long flags = 0,
          const std::string &options = {})
        : m_target(std::move(target))
    {
        fs::create_directories(m_target);
        done = mount(source, m_target.c_str(), type, flags, options.c_str()) == 0;
    }
    Mount(const Mount &) = delete;
    Mount &operator=(const Mount &) = delete;
    ~Mount()
    {
        if (done)
            umount2(m_target.c_str(), MNT_DETACH);
    }

    bool done;

private:
    fs::path m_target;
};

/// Folders so deep that their path is far longer than the kernel takes; where they end.
std::string makeDeepFolders(const fs::path &start, int depth)
{
    const std::string name(60, 'd');
    std::string path = start.string();
    int folder = open(path.c_str(), O_PATH | O_DIRECTORY);
    for (int i = 0; i < depth; ++i) {
        EXPECT_EQ(mkdirat(folder, name.c_str(), 0700), 0);
        mkdirat(folder, "aside", 0700); // So that there is always something left above.
        const int next = openat(folder, name.c_str(), O_PATH | O_DIRECTORY);
        close(folder);
        folder = next;
        path += '/' + name;
    }
    EXPECT_EQ(renameat(AT_FDCWD, (start / "treasure").c_str(), folder, "treasure"), 0);
    close(folder);
    return path + "/treasure";
}

TEST(InodeSearchTest, FindsWhateverItsNameAndPlace)
{
    const World world;
    std::vector<std::pair<FileIdentity, std::string>> wanted;
    for (const char *name : { "plain", "with space/and\nline", "\xff\xfe not UTF-8/\xc3", ".../..a",
                              ".hidden/.hidden", "a folder/" }) {
        fs::path path = world.root / name;
        if (path.has_filename()) {
            path = world.file(name);
        } else {
            path = path.parent_path();
            fs::create_directory(path);
        }
        wanted.emplace_back(identity(path), path.string());
    }
    fs::create_symlink("..", world.root / "a folder/loop");
    wanted.emplace_back(identity(world.root / "a folder/loop"),
                        (world.root / "a folder/loop").string());
    const FileIdentity treasure = identity(world.file("treasure"));
    wanted.emplace_back(treasure, makeDeepFolders(world.root, 90));

    QList<FileIdentity> identities;
    for (const auto &[one, path] : wanted)
        identities.append(one);
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few = { 64, before.rlim_max }; // Less than the folders are deep.
    setrlimit(RLIMIT_NOFILE, &few);
    for (const int threads : { 1, 2, 5 }) {
        SCOPED_TRACE(threads);
        const auto result = world.search(identities, { 60, 1'000'000, threads });
        EXPECT_TRUE(result.whole);
        EXPECT_EQ(result.found.size(), identities.size());
        for (const auto &[one, path] : wanted)
            EXPECT_EQ(pathOf(result, one), path);
    }
    const auto without = world.search(identities << goneFrom(world));
    EXPECT_TRUE(without.whole); // Among others, because no deep folder was left out.
    EXPECT_EQ(without.found.size(), identities.size() - 1);
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST(InodeSearchTest, TakesNoOtherFileOfTheSameNumber)
{
    const World world;
    const FileIdentity real = identity(world.file("folder/file"));
    FileIdentity before = real;
    before.birthNanoseconds ^= 1;
    auto result = world.search({ before });
    EXPECT_TRUE(result.found.isEmpty());
    EXPECT_TRUE(result.whole);

    FileIdentity unborn = real;
    unborn.hasBirth = false;
    result = world.search({ unborn });
    EXPECT_TRUE(result.found.isEmpty());
    EXPECT_FALSE(result.whole) << "It may have been the one.";

    result = world.search({ before, real, real });
    ASSERT_EQ(result.found.size(), 1) << "Once, although two of the three are it.";
    EXPECT_EQ(result.found[0].first, real);
}

TEST(InodeSearchTest, AHardLinkIsAsGoodAsItsFirstName)
{
    const World world;
    const FileIdentity file = identity(world.file("a/first"));
    fs::create_directory(world.root / "b");
    fs::create_hard_link(world.root / "a/first", world.root / "b/second");
    fs::remove(world.root / "a/first");
    EXPECT_EQ(pathOf(world.search({ file }), file), (world.root / "b/second").string());
}

TEST(InodeSearchTest, StopsAtItsLimitsAndClaimsNothing)
{
    World world;
    for (int i = 0; i < 400; ++i)
        world.file(std::to_string(i % 20) + '/' + std::to_string(i));
    const FileIdentity gone = goneFrom(world);
    const auto all = world.search({ gone });
    EXPECT_TRUE(all.whole);
    EXPECT_GE(all.entries, 420);

    const auto some = world.search({ gone }, { 60, 100, 2 });
    EXPECT_FALSE(some.whole);
    EXPECT_GE(some.entries, 100);
    EXPECT_LT(some.entries, 200);
    EXPECT_FALSE(world.search({ gone }, { 0, 1'000'000, 2 }).whole);

    const FileIdentity there = identity(world.root / "7/7");
    const auto at = world.search(
        { there }, unlimited,
        { QByteArray("/nowhere"), QByteArray::fromStdString((world.root / "7").string()) });
    EXPECT_EQ(pathOf(at, there), (world.root / "7/7").string());
    EXPECT_EQ(at.entries, 20) << "Only the folder that was to be looked at first.";

    world.cancelled = true;
    EXPECT_FALSE(world.search({ gone }).whole);
    EXPECT_FALSE(InodeSearch::run("/nowhere", {}, { gone }, unlimited, world.cancelled).whole);
}

TEST(InodeSearchTest, KnowsWhatUnreadableFoldersMayHold)
{
    const World world;
    const FileIdentity file = identity(world.file("folder/file"));
    const FileIdentity gone = goneFrom(world);
    const uid_t me = geteuid();
    const uid_t user = me == 0 ? 65534 : me; // No mode keeps root out.
    for (const fs::path &path : { world.top, world.root, world.root / "folder" })
        ASSERT_EQ(chown(path.c_str(), user, static_cast<gid_t>(-1)), 0);
    struct Case
    {
        const char *what;
        FileIdentity wanted;
        qsizetype found;
        mode_t mode;
        bool whole;
    };
    const Case cases[] = {
        { "readable", file, 1, 0700, true },
        { "closed: the user can have put nothing there", gone, 0, 0, true },
        { "searchable: may hold anything", gone, 0, 0300, false },
        { "only names: not that number", gone, 0, 0400, true },
        { "only names: that number, of whatever file", file, 0, 0400, false },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_EQ(chmod((world.root / "folder").c_str(), c.mode), 0);
        ASSERT_EQ(seteuid(user), 0);
        const auto result = world.search({ c.wanted });
        ASSERT_EQ(seteuid(me), 0);
        EXPECT_EQ(result.found.size(), c.found);
        EXPECT_EQ(result.whole, c.whole);
    }
    chmod((world.root / "folder").c_str(), 0700);
}

TEST(InodeSearchTest, StaysOnItsFileSystem)
{
    const World world;
    fs::create_directories(world.top / "outside/folder");
    std::ofstream(world.top / "outside/folder/file") << "x";
    fs::create_symlink("../outside", world.root / "link");
    const FileIdentity outside = identity(world.top / "outside/folder/file");
    const auto result = world.search({ outside });
    EXPECT_TRUE(result.found.isEmpty());
    EXPECT_TRUE(result.whole);

    const Mount other("none", world.root / "other mount", "tmpfs");
    if (!other.done)
        GTEST_SKIP() << "Mounting is not allowed here.";
    const Mount same((world.top / "outside").c_str(), world.root / "same mount", nullptr, MS_BIND);
    ASSERT_TRUE(same.done);
    const auto across = world.search({ identity(world.file("other mount/file")), outside });
    EXPECT_TRUE(across.found.isEmpty());
    EXPECT_TRUE(across.whole);
    const QByteArray first = QByteArray::fromStdString((world.root / "same mount/folder").string());
    EXPECT_TRUE(world.search({ outside }, unlimited, { first }).found.isEmpty());
}

TEST(InodeSearchTest, ProvesNothingWhereNumbersLie)
{
    const World world;
    const FileIdentity gone = goneFrom(world);
    const Mount lower("none", world.top / "lower", "tmpfs");
    if (!lower.done)
        GTEST_SKIP() << "Mounting is not allowed here.";
    for (const char *name : { "lower/folder", "upper", "work" })
        fs::create_directories(world.top / name);
    const std::string in = world.top.string();
    const Mount overlay("none", world.root, "overlay", 0,
                        "xino=off,lowerdir=" + in + "/lower,upperdir=" + in + "/upper,workdir=" + in
                            + "/work");
    if (!overlay.done)
        GTEST_SKIP() << "There are no overlays here.";
    const FileIdentity file = identity(world.file("folder/file"));
    EXPECT_EQ(pathOf(world.search({ file }), file), (world.root / "folder/file").string());
    EXPECT_FALSE(world.search({ gone }).whole);
}

/// Moves `from` to `to` as soon as somebody has read the folder `to` is in.
void moveWhenRead(int events, const fs::path &from, const fs::path &to)
{
    pollfd wait = { events, POLLIN, 0 };
    if (poll(&wait, 1, -1) == 1)
        fs::rename(from, to);
}

TEST(InodeSearchTest, NothingEscapesThatIsMovedMeanwhile)
{
    const World world;
    for (const char *half : { "a", "b" }) {
        for (int i = 0; i < 50; ++i)
            fs::create_directories(world.root / half / std::to_string(i));
    }
    // Which of the two is read first is not known, nor does the move always come in time: it is
    // tried both ways and several times.
    for (int i = 0; i < 24; ++i) {
        const auto [from, to] = i % 2 == 0 ? std::pair("a", "b") : std::pair("b", "a");
        const bool isFolder = i % 4 < 2;
        SCOPED_TRACE(std::string(isFolder ? "folder from " : "file from ") + from);
        const fs::path source = world.root / from / "moved";
        const fs::path target = world.root / to / "moved";
        const FileIdentity wanted = identity(world.file(isFolder ? source / "inner" : source));
        const int events = inotify_init1(IN_CLOEXEC);
        inotify_add_watch(events, target.parent_path().c_str(), IN_CLOSE_NOWRITE | IN_ONLYDIR);
        std::thread mover(moveWhenRead, events, source, target);
        const auto result = world.search({ wanted }, { 60, 1'000'000, 1 });
        close(open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY)); // If it was not.
        mover.join();
        close(events);
        EXPECT_EQ(result.found.size(), 1);
        fs::remove_all(target);
    }
}

TEST(InodeSearchTest, IsNotDisturbedByFoldersThatComeAndGo)
{
    const World world;
    for (int i = 0; i < 60; ++i)
        world.file(std::to_string(i) + "/folder/file");
    const FileIdentity gone = goneFrom(world);
    const FileIdentity there = identity(world.file("59/folder/there"));
    std::atomic<bool> done = false;
    std::thread other([&] {
        for (int i = 0; !done; i = (i + 1) % 50) {
            const fs::path path = world.root / std::to_string(i);
            fs::remove_all(path / "folder");
            fs::create_directories(path / "folder");
        }
    });
    int whole = 0;
    for (int round = 0; round < 5; ++round) {
        const auto result = world.search({ gone, there });
        whole += result.whole ? 1 : 0;
        EXPECT_EQ(result.found.size(), 1);
    }
    done = true;
    other.join();
    EXPECT_EQ(whole, 5);
}

}
