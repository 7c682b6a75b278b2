#include "base/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace {

struct World
{
    QByteArray path(const char *name) const { return folder.path().toUtf8() + '/' + name; }
    static QByteArray read(const QByteArray &path)
    {
        QFile file(QFile::decodeName(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("unreadable");
    }
    static mode_t mode(const QByteArray &path)
    {
        struct stat status {};
        return ::stat(path.constData(), &status) == 0 ? status.st_mode & 07777 : 0;
    }
    QStringList names() const
    {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                             | QDir::NoDotAndDotDot);
    }
    QTemporaryDir folder;
};

}

TEST(AtomicFileTest, ANewFileIsTheUsersAloneAndAnOldOneKeepsItsPermissions)
{
    const World w;
    ASSERT_TRUE(AtomicFile::write(w.path("a"), "one"));
    EXPECT_EQ(World::read(w.path("a")), "one");
    EXPECT_EQ(World::mode(w.path("a")), 0600u);

    ASSERT_EQ(::chmod(w.path("a").constData(), 0640), 0);
    ASSERT_TRUE(AtomicFile::write(w.path("a"), QByteArray(300000, 'x')));
    EXPECT_EQ(World::read(w.path("a")).size(), 300000);
    EXPECT_EQ(World::mode(w.path("a")), 0640u);
    EXPECT_EQ(w.names(), QStringList { QStringLiteral("a") });
}

TEST(AtomicFileTest, NamesNeedNotBeText)
{
    const World w;
    const QByteArray path = w.path("\xff\n%41");
    ASSERT_TRUE(AtomicFile::write(path, "bytes"));
    EXPECT_EQ(::unlink(path.constData()), 0); // Under just this name.
}

TEST(AtomicFileTest, OfALinkTheTargetIsReplaced)
{
    const World w;
    ASSERT_EQ(::mkdir(w.path("elsewhere").constData(), 0700), 0);
    ASSERT_EQ(::symlink("elsewhere/real", w.path("link").constData()), 0);
    ASSERT_EQ(::symlink("link", w.path("twice").constData()), 0);

    for (const char *text : { "dangling at first", "and again" }) {
        SCOPED_TRACE(text);
        ASSERT_TRUE(AtomicFile::write(w.path("twice"), text));
        EXPECT_EQ(World::read(w.path("elsewhere/real")), text);
        EXPECT_TRUE(QFileInfo(QFile::decodeName(w.path("twice"))).isSymLink());
    }
}

TEST(AtomicFileTest, AFailureLeavesTheOldFileAndNothingElse)
{
    const World w;
    ASSERT_TRUE(AtomicFile::write(w.path("a"), "old"));
    ASSERT_EQ(::mkdir(w.path("folder").constData(), 0700), 0);
    ASSERT_EQ(::mkfifo(w.path("pipe").constData(), 0600), 0);
    ASSERT_EQ(::symlink("circle", w.path("circle").constData()), 0);
    const auto before = w.names();

    for (const char *name : { "folder", "pipe", "circle", "missing/b", "a/b" }) {
        SCOPED_TRACE(name);
        errno = 0;
        EXPECT_FALSE(AtomicFile::write(w.path(name), "new"));
        EXPECT_NE(errno, 0);
        EXPECT_EQ(w.names(), before);
    }

    // A disk that fills up in the middle of the write.
    struct rlimit old {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit small { 1000, old.rlim_max };
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    errno = 0;
    const bool written = AtomicFile::write(w.path("a"), QByteArray(5000, 'x'));
    const int reason = errno;
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(reason, EFBIG);
    EXPECT_EQ(World::read(w.path("a")), "old");
    EXPECT_EQ(w.names(), before);
}
