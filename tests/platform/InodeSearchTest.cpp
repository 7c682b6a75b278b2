#include "platform/linux/InodeSearch.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr InodeSearch::Limits unlimited { 60, 1'000'000 };

/// A folder of the test's own with whatever trees below it.
class World
{
public:
    World()
        : top(m_folder.path().toStdString())
        , root(top / "root")
    {
        fs::create_directory(root);
    }
    World(const World &) = delete;
    World &operator=(const World &) = delete;
    ~World() { fs::remove_all(top); } // QTemporaryDir leaves names that are not UTF-8.

    fs::path file(const fs::path &name) const
    {
        fs::create_directories((root / name).parent_path());
        std::ofstream(root / name) << name.string();
        return root / name;
    }

    InodeSearch search(const QList<FileIdentity> &wanted,
                       InodeSearch::Limits limits = unlimited) const
    {
        InodeSearch search(wanted, limits, cancelled);
        search.walk(QByteArray::fromStdString(root.string()),
                    *MountTable("/proc/self/mountinfo").current());
        return search;
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

std::string pathOf(const InodeSearch &search, const FileIdentity &wanted)
{
    return search.found().value(wanted).toStdString();
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

TEST(InodeSearchTest, FindsWhateverItsNameAndPlaceAndNoOtherOfItsNumber)
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
    fs::create_hard_link(world.file("first"), world.root / "a folder/second");
    wanted.emplace_back(identity(world.root / "first"), (world.root / "a folder/second").string());
    fs::remove(world.root / "first");

    QList<FileIdentity> identities;
    for (const auto &[one, path] : wanted)
        identities.append(one);
    FileIdentity before = identities.first();
    before.birthNanoseconds ^= 1;
    const auto search = world.search(identities + QList { before } + identities);
    EXPECT_TRUE(search.isWhole());
    EXPECT_EQ(search.found().size(), identities.size());
    for (const auto &[one, path] : wanted)
        EXPECT_EQ(pathOf(search, one), path);

    FileIdentity unborn = identities.first();
    unborn.hasBirth = false;
    const auto maybe = world.search({ unborn });
    EXPECT_TRUE(maybe.found().isEmpty());
    EXPECT_FALSE(maybe.isWhole()) << "It may have been the one.";
}

TEST(InodeSearchTest, StopsAtItsLimitsAndClaimsNothing)
{
    World world;
    for (int i = 0; i < 400; ++i)
        world.file(std::to_string(i % 20) + '/' + std::to_string(i));
    const FileIdentity gone = goneFrom(world);
    const auto all = world.search({ gone });
    EXPECT_TRUE(all.isWhole());
    EXPECT_GE(all.entries(), 420);

    const auto some = world.search({ gone }, { 60, 100 });
    EXPECT_FALSE(some.isWhole());
    EXPECT_GE(some.entries(), 100);
    EXPECT_LT(some.entries(), 200);
    EXPECT_FALSE(world.search({ gone }, { 0, 1'000'000 }).isWhole());

    const FileIdentity there = identity(world.root / "7/7");
    InodeSearch near({ there, gone }, unlimited, world.cancelled);
    near.lookInto("/nowhere");
    near.lookInto(QByteArray::fromStdString((world.root / "7").string()));
    EXPECT_EQ(pathOf(near, there), (world.root / "7/7").string());
    EXPECT_EQ(near.entries(), 20) << "Only the folder that was to be looked into.";

    world.cancelled = true;
    EXPECT_FALSE(world.search({ gone }).isWhole());
    world.cancelled = false;
    InodeSearch nowhere({ gone }, unlimited, world.cancelled);
    nowhere.walk("/nowhere", Mounts());
    EXPECT_FALSE(nowhere.isWhole());
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
        uid_t owner = 0; // 0: the user.
    };
    const Case cases[] = {
        { "readable", file, 1, 0700, true },
        { "closed: the user can have put nothing there", gone, 0, 0, true },
        { "searchable: may hold anything", gone, 0, 0300, false },
        { "another's, searchable and without folders", gone, 0, 0711, true, 12345 },
        { "only names: not that number", gone, 0, 0400, true },
        { "only names: that number, of whatever file", file, 0, 0400, false },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        if (c.owner != 0 && me != 0)
            continue;
        ASSERT_EQ(chown((world.root / "folder").c_str(), c.owner == 0 ? user : c.owner,
                        static_cast<gid_t>(-1)),
                  0);
        ASSERT_EQ(chmod((world.root / "folder").c_str(), c.mode), 0);
        ASSERT_EQ(seteuid(user), 0);
        const auto result = world.search({ c.wanted });
        ASSERT_EQ(seteuid(me), 0);
        EXPECT_EQ(result.found().size(), c.found);
        EXPECT_EQ(result.isWhole(), c.whole);
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
    EXPECT_TRUE(result.found().isEmpty());
    EXPECT_TRUE(result.isWhole());

    const Mount other("none", world.root / "other mount", "tmpfs");
    if (!other.done)
        GTEST_SKIP() << "Mounting is not allowed here.";
    const Mount same((world.top / "outside").c_str(), world.root / "same mount", nullptr, MS_BIND);
    ASSERT_TRUE(same.done);
    const auto across = world.search({ identity(world.file("other mount/file")), outside });
    EXPECT_TRUE(across.found().isEmpty());
    EXPECT_TRUE(across.isWhole());
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
    EXPECT_FALSE(world.search({ gone }).isWhole());
}

}

TEST(InodeSearchTest, WhatWasMountedAfterTheWalkBeganDoesNotHoldItUp)
{
    const World world;
    const FileIdentity file = identity(world.file("a/file"));
    const FileIdentity gone = goneFrom(world);
    fs::create_directories(world.root / "mount");
    const QByteArray place = QByteArray::fromStdString((world.root / "mount").string());
    // A file system whose server never answers.
    const int server = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    const QByteArray options
        = "fd=" + QByteArray::number(server) + ",rootmode=40000,user_id=0,group_id=0";
    if (server < 0 || ::mount("hung", place.constData(), "fuse", 0, options.constData()) != 0)
        GTEST_SKIP() << "only root may mount";
    std::atomic<bool> ended = false;
    std::thread walking([&] {
        InodeSearch search({ file, gone }, unlimited, world.cancelled);
        search.walk(QByteArray::fromStdString(world.root.string()), Mounts());
        EXPECT_EQ(search.found().size(), 1);
        EXPECT_TRUE(search.isWhole());
        ended = true;
    });
    for (int i = 0; i < 500 && !ended; ++i)
        ::usleep(10000);
    EXPECT_TRUE(ended);
    ::umount2(place.constData(), MNT_DETACH);
    ::close(server); // Ends the wait of one that waits.
    walking.join();
}
