#include "panel/FolderWatcher.h"

#include "base/NativeFile.h"
#include "platform/fake/FakeFolderEvents.h"
#include "platform/fake/VirtualQueue.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class FolderWatcherTest : public testing::Test
{
protected:
    FolderWatcherTest()
    {
        watcher.onNewFiles = [this](const QList<QUrl> &urls) {
            QByteArray call;
            for (const QUrl &url : urls)
                call += FilePath::lastComponent(FilePath::fromUrl(url)) + ' ';
            calls.append(call.trimmed());
        };
        make("old.png");
        watch();
    }

    void watch(bool wanted = true)
    {
        watcher.watch(wanted ? QList<QByteArray> { folder } : QList<QByteArray> {});
        queue.settle();
    }

    QByteArray at(const QByteArray &name) const { return folder + '/' + name; }
    void make(const QByteArray &name, const QByteArray &bytes = "bytes") const
    {
        EXPECT_TRUE(NativeFile::writeNew(at(name), bytes));
    }
    void rename(const QByteArray &from, const QByteArray &to) const
    {
        EXPECT_EQ(std::rename(at(from).constData(), at(to).constData()), 0);
    }

    /// What was reported when the event's scan is over.
    QList<QByteArray> afterChange()
    {
        calls.clear();
        events.change(folder);
        queue.advance(0.8);
        return calls;
    }

    QTemporaryDir directory;
    QByteArray folder = directory.path().toUtf8();
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    FakeFolderEvents events;
    FolderWatcher watcher { events, queue, workers };
    QList<QByteArray> calls;
};

using Calls = QList<QByteArray>;

TEST_F(FolderWatcherTest, ReportsWhatIsNewOnceInOrderOfNames)
{
    make("b.png");
    make("a.png");
    make("Sub/inner.txt"); // A folder counts, what is in it does not.
    events.change(folder);
    queue.advance(0.5);
    events.change(folder);
    queue.advance(0.29);
    EXPECT_EQ(calls, Calls()); // The writer gets its 0.8 seconds.
    queue.advance(1);
    EXPECT_EQ(calls, Calls { "Sub a.png b.png" });

    rename("old.png", "new.png");
    EXPECT_EQ(afterChange(), Calls { "new.png" });
    rename("new.png", "old.png");
    EXPECT_EQ(afterChange(), Calls { "old.png" }) << "its name had been forgotten";
    NativeFile::remove(at("a.png"));
    make("a.png", "other bytes");
    EXPECT_EQ(afterChange(), Calls()) << "the set of names has not changed";
}

TEST_F(FolderWatcherTest, PassesOverWhatIsHiddenPartialOrStillWritten)
{
    make(".hidden.png");
    make("report.pdf.crdownload");
    make("REPORT.PDF.PART");
    make("a.Download");
    make("b.partial");
    make("c.tmp");
    make("slow.mkv");
    events.written[at("slow.mkv")] = FolderEvents::Writing::Open;
    make("report.pdf", ""); // The browser's placeholder.
    EXPECT_EQ(afterChange(), Calls());

    rename("report.pdf.crdownload", "report.pdf");
    make("part");
    EXPECT_EQ(afterChange(), (Calls { "part report.pdf" }));
    events.written.clear();
    EXPECT_EQ(afterChange(), Calls { "slow.mkv" }) << "fresh when it is whole";

    make("remote.txt");
    events.written[at("remote.txt")] = FolderEvents::Writing::Recent;
    EXPECT_EQ(afterChange(), Calls());
    events.written.clear();
    queue.advance(0.8);
    EXPECT_EQ(calls, Calls { "remote.txt" })
        << "no event tells of its end, so it is looked at again";
}

TEST_F(FolderWatcherTest, FollowsTheListOfFolders)
{
    make("missed.png");
    events.change(folder);
    watch(false);
    EXPECT_FALSE(events.isWatched(folder));
    queue.advance(1);
    watch();
    EXPECT_EQ(afterChange(), Calls()) << "what lies there when watching begins is old";

    // One that stays in the list keeps what it knows.
    make("kept.png");
    watcher.watch({ at("none"), folder });
    queue.settle();
    EXPECT_EQ(afterChange(), Calls { "kept.png" });

    // A folder that cannot be opened is tried again only when it is named again.
    make("none/first");
    queue.advance(10);
    EXPECT_FALSE(events.isWatched(at("none")));
    watcher.watch({ at("none"), folder });
    watcher.watch({ at("none") }); // Not opened a second time.
    queue.settle();
    EXPECT_TRUE(events.isWatched(at("none")));
    EXPECT_FALSE(events.isWatched(folder));
}

TEST_F(FolderWatcherTest, MayBeSwitchedOffByWhatItReports)
{
    watcher.onNewFiles = [this](const QList<QUrl> &) { watcher.watch({}); };
    make("a");
    events.change(folder);
    events.change(folder);
    queue.advance(2);
    EXPECT_FALSE(events.isWatched(folder));
}

}
