#include "platform/linux/files/InotifyFolders.h"

#include "base/NativeFile.h"
#include "base/QtMainQueue.h"

#include <QCoreApplication>
#include <QHash>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Writing = FolderEvents::Writing;

TEST(InotifyFolders, TellsOfWhatHappensDirectlyInAFolder)
{
    QTemporaryDir directory;
    const QByteArray path = directory.path().toUtf8();
    QtMainQueue queue;
    InotifyFolders events(queue);
    EXPECT_EQ(events.open(path + "/none"), nullptr);
    EXPECT_TRUE(NativeFile::writeNew(path + "/sub/a", "a"));
    EXPECT_EQ(events.open(path + "/sub/a"), nullptr) << "a file is no folder";

    auto folder = events.open(path);
    const auto again = events.open(path + "/."); // The kernel gives the same watch.
    EXPECT_TRUE(NativeFile::writeNew(path + "/early", "a"));
    int calls = 0;
    int others = 0;
    auto first = folder->listen([&] { ++calls; });
    const auto second = again->listen([&] { ++others; });
    const auto settle = [&](int expected) {
        const double end = queue.uptime() + 0.3; // Longer than reading rests.
        while (queue.uptime() < end && (calls < expected || expected == 0))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents,
                                            20);
        return std::exchange(calls, 0);
    };
    const auto wake = queue.every(0.01, [] {});
    EXPECT_EQ(settle(1), 1) << "what happened before anybody listened";
    EXPECT_TRUE(NativeFile::writeNew(path + "/sub/b", "deeper"));
    EXPECT_EQ(settle(0), 0);

    for (int i = 0; i < 6000; ++i) { // More than the kernel's queue holds, which is an event too.
        const QByteArray name = path + "/file" + QByteArray::number(i);
        ::close(::open(name.constData(), O_CREAT | O_WRONLY, 0600));
        ::unlink(name.constData());
    }
    const int burst = settle(1);
    EXPECT_GE(burst, 1);
    EXPECT_LE(burst, 40) << "what happens together is told together";

    first.reset();
    folder.reset();
    EXPECT_TRUE(NativeFile::writeNew(path + "/late", "a"));
    others = 0;
    settle(0);
    EXPECT_EQ(others, 1) << "the other one goes on";
}

TEST(InotifyFolders, KnowsWhoIsStillWriting)
{
    QTemporaryDir directory;
    const QByteArray path = directory.path().toUtf8() + "/file";
    QtMainQueue queue;
    const InotifyFolders events(queue);
    const int writer = ::open(path.constData(), O_CREAT | O_WRONLY, 0600);
    EXPECT_EQ(events.writing(path), Writing::Open);
    ::close(writer);
    const int reader = ::open(path.constData(), O_RDONLY);
    EXPECT_EQ(events.writing(path), Writing::Over);
    ::close(reader);
    // A writer that comes while the kernel's answer is in force makes it send a signal.
    std::atomic<bool> isEager = true;
    std::thread eager([&] {
        while (isEager)
            ::close(::open(path.constData(), O_WRONLY));
    });
    QHash<Writing, int> told;
    for (int i = 0; i < 20'000 || told.size() < 2; ++i)
        ++told[events.writing(path)];
    isEager = false;
    eager.join();
    EXPECT_EQ(told.value(Writing::Recent), 0);
    EXPECT_EQ(::mkfifo((path + "pipe").constData(), 0600), 0);
    EXPECT_EQ(events.writing(path + "pipe"), Writing::Over) << "and does not wait for a writer";
    EXPECT_EQ(events.writing(path + "none"), Writing::Over);
}

}
