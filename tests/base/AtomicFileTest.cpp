#include "base/AtomicFile.h"

#include "base/NativeFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <tuple>

namespace {

struct World
{
    QByteArray path(const char *name) const { return folder.path().toUtf8() + '/' + name; }
    static mode_t mode(const QByteArray &path)
    {
        struct stat status
        {
        };
        return ::stat(path.constData(), &status) == 0 ? status.st_mode & 07777 : 0;
    }
    QStringList names() const
    {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    ~World()
    {
        NativeFile::remove(folder.path().toUtf8());
    } // QTemporaryDir cannot spell every name.
    QTemporaryDir folder;
};

}

TEST(AtomicFileTest, ANewFileIsTheUsersAloneAndAnOldOneKeepsItsPermissions)
{
    const World w;
    ASSERT_TRUE(AtomicFile::write(w.path("a"), "one"));
    EXPECT_EQ(NativeFile::read(w.path("a")).bytes, QByteArray("one"));
    EXPECT_EQ(World::mode(w.path("a")), 0600u);

    ASSERT_EQ(::chmod(w.path("a").constData(), 0640), 0);
    ASSERT_TRUE(AtomicFile::write(w.path("a"), QByteArray(300000, 'x')));
    EXPECT_EQ(NativeFile::read(w.path("a")).bytes.value_or("").size(), 300000);
    EXPECT_EQ(World::mode(w.path("a")), 0640u);
    EXPECT_EQ(w.names(), QStringList { QStringLiteral("a") });
}

TEST(AtomicFileTest, WhatAKilledProcessLeftIsReplacedAndNeverFollowed)
{
    const World w;
    const QByteArray victim = w.path("victim");
    ASSERT_TRUE(NativeFile::writeNew(victim, "the user's"));
    const auto leftovers = {
        +[](const QByteArray &path) { return NativeFile::writeNew(path, "torn"); },
        +[](const QByteArray &path) { return ::symlink("victim", path.constData()) == 0; },
        +[](const QByteArray &path) { return ::mkfifo(path.constData(), 0666) == 0; },
    };
    // The longest name there is must have a temporary one as well.
    for (const QByteArray &name : { QByteArray("a"), QByteArray(NAME_MAX, 'n') }) {
        const QByteArray target = w.folder.path().toUtf8() + '/' + name;
        const QByteArray temporary
            = w.folder.path().toUtf8() + "/." + name.left(243) + ".vantle-new";
        for (const auto leave : leftovers) {
            ASSERT_TRUE(leave(temporary));
            ASSERT_TRUE(AtomicFile::write(target, "new"));
            EXPECT_EQ(NativeFile::read(target).bytes, QByteArray("new"));
            EXPECT_EQ(World::mode(target), 0600u);
        }
    }
    EXPECT_EQ(NativeFile::read(victim).bytes, QByteArray("the user's"));
    EXPECT_EQ(w.names().size(), 3);
}

TEST(AtomicFileTest, OfALinkTheTargetIsReplaced)
{
    const World w;
    ASSERT_EQ(::mkdir(w.path("elsewhere").constData(), 0700), 0);
    ASSERT_EQ(::symlink("elsewhere/re\xff\n%41", w.path("link").constData()), 0);
    ASSERT_EQ(::symlink("link", w.path("twice").constData()), 0);

    for (const char *text : { "dangling at first", "and again" }) {
        SCOPED_TRACE(text);
        ASSERT_TRUE(AtomicFile::write(w.path("twice"), text));
        EXPECT_EQ(NativeFile::read(w.path("elsewhere/re\xff\n%41")).bytes, QByteArray(text));
        EXPECT_TRUE(QFileInfo(QFile::decodeName(w.path("twice"))).isSymLink());
    }
}

TEST(AtomicFileTest, WhatTheProgramMakesIsTheUsersAloneWhateverTheMask)
{
    const World w;
    const mode_t before = ::umask(0);
    EXPECT_TRUE(NativeFile::writeNew(w.path("own/a"), "content"));
    ::umask(before);
    EXPECT_EQ(World::mode(w.path("own")), 0700u);
    EXPECT_EQ(World::mode(w.path("own/a")), 0600u);

    // Others lose what they had, the user keeps what there is.
    ASSERT_EQ(::symlink("own", w.path("link").constData()), 0);
    for (const auto &[name, old, expected] :
         { std::tuple("own", 0755u, 0700u), { "own", 0577u, 0500u }, { "link", 0755u, 0755u } }) {
        ASSERT_EQ(::chmod(w.path("own").constData(), old), 0);
        EXPECT_TRUE(NativeFile::makePrivateFolder(w.path(name)));
        EXPECT_EQ(World::mode(w.path("own")), expected) << name << old;
    }
    EXPECT_FALSE(NativeFile::makePrivateFolder(w.path("own/a")));
    EXPECT_EQ(World::mode(w.path("own/a")), 0600u);
}

TEST(AtomicFileTest, AFailureLeavesTheOldFileAndNothingElse)
{
    const World w;
    ASSERT_TRUE(AtomicFile::write(w.path("a"), "old"));
    ASSERT_EQ(::mkdir(w.path("folder").constData(), 0700), 0);
    ASSERT_EQ(::mkfifo(w.path("pipe").constData(), 0600), 0);
    ASSERT_EQ(::symlink("circle", w.path("circle").constData()), 0);
    const auto before = w.names();

    // More than can be read.
    const QByteArrayList huge(257, QByteArray(1 << 20, 'x'));
    EXPECT_FALSE(AtomicFile::write(w.path("a"), huge));
    EXPECT_EQ(NativeFile::read(w.path("a")).bytes, QByteArray("old"));
    EXPECT_EQ(w.names(), before);

    for (const char *name : { "folder", "pipe", "circle", "missing/b", "a/b" }) {
        SCOPED_TRACE(name);
        errno = 0;
        EXPECT_FALSE(AtomicFile::write(w.path(name), "new"));
        EXPECT_NE(errno, 0);
        EXPECT_EQ(w.names(), before);
    }
}

TEST(AtomicFileTest, OnlyWhatIsNotThereIsMissing)
{
    using NativeFile::Failure;
    const World w;
    ASSERT_TRUE(AtomicFile::write(w.path("a"), "file"));
    ASSERT_EQ(::symlink("circle", w.path("circle").constData()), 0);
    ASSERT_EQ(::mkfifo(w.path("pipe").constData(), 0600), 0);
    const std::pair<QByteArray, Failure> cases[] = {
        { w.path("none"), Failure::Missing },
        { w.path("a/b"), Failure::Missing },
        { w.path("circle"), Failure::Unreadable },
        { w.path("pipe"), Failure::Unreadable },
        { w.path(""), Failure::Unreadable },
        { "/proc/self/mem", Failure::Unreadable }, // EIO.
    };
    for (const auto &[path, failure] : cases) {
        const auto content = NativeFile::read(path);
        EXPECT_TRUE(!content.bytes && content.failure == failure) << path.constData();
    }
}
