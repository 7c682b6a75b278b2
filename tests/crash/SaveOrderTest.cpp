#include "store/StoreWorld.h"

#include <cerrno>
#include <cstdarg>
#include <functional>
#include <regex>
#include <string>

#include <fcntl.h>

namespace {

/// What the program calls about the state file S, its temporary file T and the
/// data folder D, a word and a letter each. Can make one of the calls fail.
class Tape
{
public:
    enum class Fault { None, NoSpace, InputOutput, Interrupted, Short };

    void start(const QByteArray &dataDir, Fault fault = Fault::None, int at = -1)
    {
        m_folder = dataDir;
        m_calls.clear();
        m_count = 0;
        m_fault = fault;
        m_at = at;
    }
    std::string stop()
    {
        m_folder.clear();
        m_files.clear();
        return m_calls;
    }

    char letterOf(const char *path) const
    {
        if (m_folder.isEmpty())
            return 0;
        const QByteArrayView given(path);
        if (given == m_folder)
            return 'D';
        if (given == m_folder + "/shelves.json")
            return 'S';
        return given == m_folder + "/.shelves.json.vantle-new" ? 'T' : '\0';
    }
    char letterOf(int file) const { return m_files.value(file); }
    void opened(int file, char letter) { m_files.insert(file, letter); }
    void closed(int file) { m_files.remove(file); }

    /// Notes the call; whether it is the one that must fail.
    bool fails(const char *what, char letter, const char *more = "")
    {
        if (letter == 0)
            return false;
        m_calls += what + (std::string(" ") + letter) + more + ';';
        const bool hit = m_count++ == m_at;
        errno = m_fault == Fault::NoSpace ? ENOSPC : m_fault == Fault::Interrupted ? EINTR : EIO;
        return hit && m_fault != Fault::None && m_fault != Fault::Short;
    }
    bool isCutShort() const { return m_fault == Fault::Short && m_count == m_at + 1; }
    bool wasHit() const { return m_count > m_at; }

private:
    QByteArray m_folder;
    std::string m_calls;
    int m_count = 0;
    int m_at = -1;
    Fault m_fault = Fault::None;
    QHash<int, char> m_files;
};

Tape tape;

}

// The names are the linker's. NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl50-cpp)
extern "C" {

int __real_open(const char *path, int flags, ...);
ssize_t __real_write(int file, const void *bytes, size_t count);
int __real_fsync(int file);
int __real_fchmod(int file, mode_t mode);
int __real_close(int file);
int __real_rename(const char *from, const char *to);
int __real_unlink(const char *path);

int __wrap_open(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    const bool reading = (flags & O_ACCMODE) == O_RDONLY;
    char letter = tape.letterOf(path);
    if (letter == 'S' && reading)
        letter = 0;
    constexpr int fresh = O_CREAT | O_EXCL | O_NOFOLLOW;
    const char *more = (flags & fresh) == fresh && mode == 0600 ? " new" : "";
    if (tape.fails("open", letter, more))
        return -1;
    const int file = __real_open(path, flags, mode);
    if (file >= 0 && letter != 0)
        tape.opened(file, letter);
    return file;
}

ssize_t __wrap_write(int file, const void *bytes, size_t count)
{
    if (tape.fails("write", tape.letterOf(file)))
        return -1;
    const bool cut = tape.letterOf(file) != 0 && tape.isCutShort() && count > 1;
    return __real_write(file, bytes, cut ? count / 2 : count);
}

int __wrap_fsync(int file)
{
    return tape.fails("sync", tape.letterOf(file)) ? -1 : __real_fsync(file);
}

int __wrap_fchmod(int file, mode_t mode)
{
    return tape.fails("mode", tape.letterOf(file)) ? -1 : __real_fchmod(file, mode);
}

int __wrap_close(int file)
{
    const bool fails = tape.fails("close", tape.letterOf(file));
    const int reason = errno;
    tape.closed(file);
    const int result = __real_close(file);
    errno = fails ? reason : errno;
    return fails ? -1 : result;
}

int __wrap_rename(const char *from, const char *to)
{
    const std::string more = std::string(" ") + tape.letterOf(to);
    return tape.fails("rename", tape.letterOf(from), more.c_str()) ? -1 : __real_rename(from, to);
}

int __wrap_unlink(const char *path)
{
    return tape.fails("unlink", tape.letterOf(path)) ? -1 : __real_unlink(path);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl50-cpp)

namespace {

QByteArray memoryOf(const ShelfStore &store)
{
    return StateCoding::encode(
        { store.currentID.value(), store.shelves.value(), store.closed.value() });
}

}

TEST(SaveOrderTest, EverySaveIsWrittenThenSyncedThenRenamedThenItsFolderSynced)
{
    const std::regex saves("(unlink T;open T new;(mode T;)?(write T;)+sync T;close T;rename T S;"
                           "open D;sync D;close D;)+");
    World w;
    w.store();
    w.store().add({ w.file("a") });
    w.store().newShelf();
    w.store().switchToIndex(0);
    const QByteArray former = w.home() + "/former"; // The file itself, under another name.
    const std::function<void()> operations[] = {
        [&] { w.store().add(w.files(20)); },
        [&] { w.store().addText(QStringLiteral("x")); },
        [&] { w.store().closeShelf(w.store().currentID.value()); },
        [&] {
            w.store().add(w.files(3));
            w.queue.advance(100);
            w.store().pruneExpired(1);
        },
    };
    for (const auto &operation : operations) {
        SCOPED_TRACE(&operation - operations);
        const auto before = w.saved();
        NativeFile::remove(former);
        ASSERT_EQ(::link(w.data("shelves.json").constData(), former.constData()), 0);
        tape.start(w.paths().dataDir);
        operation();
        w.queue.settle();
        const std::string calls = tape.stop();
        EXPECT_TRUE(std::regex_match(calls, saves)) << calls;
        EXPECT_EQ(w.saved(), memoryOf(w.store()));
        EXPECT_EQ(w.read(former), before); // Replaced, never written to.
    }
    tape.start(w.paths().dataDir);
    w.restart();
    EXPECT_EQ(tape.stop(), ""); // Nothing has changed.
}

TEST(SaveOrderTest, WhicheverCallFailsTheFileIsWholeAndTheNextSaveWorks)
{
    using Fault = Tape::Fault;
    const std::pair<Fault, int> faults[] = {
        // How many calls may fail the save at most: with a signal, only those that no
        // signal interrupts on a local file system.
        { Fault::NoSpace, 99 },
        { Fault::InputOutput, 99 },
        { Fault::Interrupted, 2 },
        { Fault::Short, 0 },
    };
    for (const auto &[fault, most] : faults) {
        int failures = 0;
        bool hit = true;
        for (int at = 0; hit; ++at) {
            SCOPED_TRACE(testing::Message() << "fault " << int(fault) << " at call " << at);
            World w;
            w.store().add(w.files(2));
            // Left by a process that was killed: even that it cannot be removed is survived.
            World::write(w.data(".shelves.json.vantle-new"), "torn");
            const auto old = w.saved();
            tape.start(w.paths().dataDir, fault, at);
            w.store().add(w.files(30));
            const auto calls = tape.stop();
            hit = tape.wasHit();
            EXPECT_EQ(w.urls().size(), 30);
            EXPECT_TRUE(w.saved() == memoryOf(w.store()) || (hit && w.saved() == old)) << calls;
            failures += w.saved() == old ? 1 : 0;

            w.store().togglePin(w.store().currentID.value());
            EXPECT_EQ(w.saved(), memoryOf(w.store()));
            EXPECT_EQ(NativeFile::namesIn(w.paths().dataDir), QList<QByteArray> { "shelves.json" });
        }
        EXPECT_LE(failures, most);
        EXPECT_TRUE(failures >= 5 || most < 99);
    }
}

TEST(SaveOrderTest, AStartWhoseSaveFailsLosesNothing)
{
    for (int at = 0; at < 8; ++at) {
        SCOPED_TRACE(at);
        World w;
        w.store().add(w.files(3));
        w.store().addText(QStringLiteral("kept"));
        const auto memory = memoryOf(w.store());
        tape.start(w.paths().dataDir, Tape::Fault::InputOutput, at);
        w.restart();
        tape.stop();
        EXPECT_EQ(memoryOf(w.store()), memory);
        EXPECT_EQ(w.saved(), memory);
        EXPECT_EQ(w.droppedNames().size(), 1);
    }
}
