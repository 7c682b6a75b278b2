#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "store/StateCoding.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <random>
#include <thread>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool canMount = false;

/// Lets this process mount what only it and its children see, and what ends with them. For
/// root and, where the kernel lets users have namespaces, for anyone. Before the first thread.
bool enterMounts()
{
    const auto user = std::to_string(::getuid());
    const auto group = std::to_string(::getgid());
    if (::getuid() == 0 ? ::unshare(CLONE_NEWNS) != 0 : ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    if (user != "0") {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
        std::ofstream("/proc/self/gid_map") << "0 " + group + " 1";
    }
    return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

QByteArray digestOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
}

/// What a child said, in order: the kind of line and the state's digest.
using Story = QList<std::pair<QByteArray, QByteArray>>;

/// A process that saves without pause.
class Child
{
public:
    Child(const QByteArray &home, unsigned seed)
    {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        m_process = ::fork();
        if (m_process == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            const std::string number = std::to_string(seed);
            ::execl(CRASH_CHILD, CRASH_CHILD, home.constData(), number.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        m_output = ends[0];
    }

    void waitForStart()
    {
        while (!m_text.contains('\n') && readSome()) { }
    }

    /// Everything that it had said.
    Story kill()
    {
        ::kill(m_process, SIGKILL);
        while (readSome()) { }
        ::close(m_output);
        int status = 0;
        ::waitpid(m_process, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself, status " << status;
        Story story;
        for (const QByteArray &line : m_text.split('\n')) {
            if (const auto space = line.indexOf(' '); space > 0)
                story.emplace_back(line.left(space), line.mid(space + 1));
        }
        return story;
    }

private:
    bool readSome()
    {
        char buffer[4096];
        const ssize_t count = ::read(m_output, buffer, sizeof buffer);
        if (count > 0)
            m_text.append(buffer, count);
        return count > 0;
    }

    pid_t m_process = -1;
    int m_output = -1;
    QByteArray m_text;
};

enum class Disk { Good, Failing };

/// A home whose program is killed again and again.
class CrashTest : public testing::Test
{
protected:
    void start(const QString &folder)
    {
        m_home = std::make_unique<QTemporaryDir>(folder + QStringLiteral("/vantle-XXXXXX"));
        ASSERT_TRUE(m_home->isValid());
    }

    void fill() const
    {
        for (int i = 0; i < 200; ++i)
            ASSERT_TRUE(NativeFile::writeNew(home() + "/files/f" + QByteArray::number(i), "x"));
    }

    /// One life: from the start to a kill at any moment of the next 60
    /// milliseconds, some counted from before the start.
    Story liveOnce()
    {
        Child child(home(), unsigned(m_random()));
        if (m_random() % 5 != 0)
            child.waitForStart();
        std::this_thread::sleep_for(std::chrono::microseconds(m_random() % 60000));
        return child.kill();
    }

    /// The file must be what the child was about to put in place last, or what
    /// was there just before. Counts what has happened.
    void checkFile(const Story &story, Disk disk)
    {
        QByteArray before = m_known;
        QByteArray last = m_known;
        QByteArray inMemory; // What is there before the first save.
        bool settled = false;
        for (const auto &[what, digest] : story) {
            settled = what != "about";
            if (what == "about") {
                before = std::exchange(last, digest);
                ++m_saves;
            } else if (what == "loaded") {
                EXPECT_TRUE(last.isEmpty() || digest == m_known)
                    << "a start must give the state that was saved";
                inMemory = digest;
            } else if (disk == Disk::Good) {
                EXPECT_EQ(digest, last.isEmpty() ? inMemory : last)
                    << "an operation has not saved what it did";
            }
            m_memory.insert(digest);
        }
        const auto bytes = NativeFile::read(home() + "/Vantle/shelves.json").bytes;
        const QByteArray now = bytes ? digestOf(*bytes) : QByteArray();
        EXPECT_TRUE(now == last || (now == before && !settled))
            << "the state file is none that the program had told of";
        m_known = now;
        if (bytes)
            checkContent(*bytes);
    }

    void checkContent(const QByteArray &bytes)
    {
        const auto state = StateCoding::decodeState(bytes);
        ASSERT_TRUE(state);
        EXPECT_FALSE(state->shelves.isEmpty());
        for (const Shelf &shelf : state->shelves + state->closed) {
            for (const ShelfItem &item : shelf.items) {
                EXPECT_TRUE(FilePath::exists(FilePath::fromUrl(item.url)))
                    << "a file that an entry names is gone: " << item.url.toEncoded().constData();
                m_managed += FilePath::isBelow(FilePath::fromUrl(item.url), home() + "/Vantle");
            }
        }
        const auto names = NativeFile::namesIn(home() + "/Vantle");
        EXPECT_LE(names.size(), 3) << "more than the state, \"dropped\" and one temporary file";
    }

    void liveAndDie(int times, Disk disk)
    {
        for (int i = 0; i < times && !HasFailure(); ++i) {
            SCOPED_TRACE(i);
            checkFile(liveOnce(), disk);
        }
    }

    /// Leaves that many bytes free.
    void takeSpace(qsizetype left) const
    {
        const int file = NativeFile::create(home() + "/filler");
        const QByteArray page(4096, 'x');
        off_t size = 0;
        while (::write(file, page.constData(), size_t(page.size())) == page.size())
            size += page.size();
        EXPECT_EQ(::ftruncate(file, std::max<off_t>(0, size - left)), 0);
        ::close(file);
    }

    /// How often the long form kills on each disk, and the short one.
    static int times()
    {
        const int given = qEnvironmentVariableIntValue("VANTLE_KILLS");
        return std::max(1, (given > 0 ? given : 50) / 2);
    }

    QByteArray home() const { return m_home->path().toUtf8(); }

    std::unique_ptr<QTemporaryDir> m_home;
    std::mt19937 m_random { std::random_device()() };
    QByteArray m_known; // Digest of the state file after the last death; empty for none.
    QSet<QByteArray> m_memory; // Every state that a child has had.
    int m_saves = 0;
    int m_managed = 0;
};

/// On a disk, where a save takes long, and in memory, where many fit in a moment.
class KillTest : public CrashTest, public testing::WithParamInterface<const char *>
{
};

}

TEST_P(KillTest, EveryStartFindsAStateThatTheLastLifeHadSaved)
{
    if (::access(GetParam(), W_OK) != 0)
        GTEST_SKIP() << GetParam() << " is not there";
    start(QString::fromUtf8(GetParam()));
    fill();
    liveAndDie(times(), Disk::Good);
    EXPECT_GT(m_saves, times());
    EXPECT_GT(m_managed, 0);
}

INSTANTIATE_TEST_SUITE_P(Places, KillTest, testing::Values("/var/tmp", "/dev/shm"));

TEST_F(CrashTest, OnAFullOrReadOnlyDiskTheOldStateStaysAndMemoryGoesOn)
{
    if (!canMount)
        GTEST_SKIP() << "neither root nor a user namespace: no file system can be mounted";
    start(QDir::tempPath());
    ASSERT_EQ(::mount("tmpfs", home().constData(), "tmpfs", 0, "mode=0700,size=2m"), 0);
    fill();
    liveAndDie(5, Disk::Good);
    for (int i = 0; i < std::max(4, times() / 5) && !HasFailure(); ++i) {
        const bool isFull = i % 2 == 0;
        if (isFull)
            takeSpace(qsizetype(m_random() % 8) * 4096);
        else
            ASSERT_EQ(::mount("none", home().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
                      0);
        const int saves = m_saves;
        m_memory.clear();
        // A busy machine ends lives before they have done anything.
        for (int lives = 0; lives < 20 && m_memory.size() <= 3; ++lives)
            liveAndDie(3, Disk::Failing);
        EXPECT_GT(m_memory.size(), 3);
        EXPECT_TRUE(isFull || m_saves == saves);
        ASSERT_EQ(::mount("none", home().constData(), nullptr, MS_REMOUNT, nullptr), 0);
        NativeFile::remove(home() + "/filler");
        const int before = m_saves;
        for (int lives = 0; lives < 20 && m_saves == before; ++lives)
            liveAndDie(5, Disk::Good);
        EXPECT_GT(m_saves, before);
    }
    ::umount2(home().constData(), MNT_DETACH);
}

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    canMount = enterMounts();
    return RUN_ALL_TESTS();
}
