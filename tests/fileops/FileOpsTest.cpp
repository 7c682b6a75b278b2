#include "fileops/FileOps.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "fileops/OpenWithCache.h"
#include "platform/fake/FakeApplications.h"
#include "platform/fake/VirtualQueue.h"
#include "store/WebLocation.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(FileOpsTest, AWebLocationFileOpensItsAddress)
{
    const QTemporaryDir folder;
    const QByteArray base = folder.path().toUtf8();
    const QUrl address(QStringLiteral("https://example.org/a?b=c&d"));
    ASSERT_TRUE(NativeFile::writeNew(base + "/Good.WEBLOC", WebLocation::encode(address)));
    ASSERT_TRUE(NativeFile::writeNew(base + "/bad.webloc", "nothing of the kind"));
    const QList<Address> urls { FilePath::toUrl(base + "/n\xE4me.txt"),
                                FilePath::toUrl(base + "/Good.WEBLOC"),
                                FilePath::toUrl(base + "/bad.webloc"),
                                FilePath::toUrl(base + "/gone.webloc") };
    VirtualQueue queue;
    VirtualWorkers workers(queue);
    FakeApplications applications;
    FileOps::open(urls, applications, workers);
    EXPECT_TRUE(applications.opened.isEmpty()); // Not while the caller waits.
    queue.settle();
    EXPECT_EQ(applications.opened, (QList<Address> { urls[0], address, urls[2], urls[3] }));

    FileOps::open(urls, applications, workers, QStringLiteral("browser.desktop"));
    queue.settle();
    EXPECT_EQ(applications.opened.mid(4), applications.opened.mid(0, 4));
    for (qsizetype i = 0; i < 8; ++i)
        EXPECT_EQ(workers.places.value(i), FilePath::fromUrl(urls[i % 4]));
    EXPECT_EQ(applications.openedWith, QStringLiteral("browser.desktop"));
}

TEST(OpenWithCacheTest, EachKindOfFileIsLookedUpOnce)
{
    VirtualQueue queue;
    VirtualWorkers workers(queue);
    FakeApplications applications;
    for (int i = 0; i < 20; ++i)
        applications.installed.append({ QString::number(i), QString(), QString() });
    OpenWithCache cache(applications, queue, workers);
    const QList<QUrl> kinds { FilePath::toUrl("/a/one.TXT"), FilePath::toUrl("/a/.profile"),
                              FilePath::toUrl("/a/b.txt", FilePath::Kind::Directory) };
    const QList<QUrl> same { FilePath::toUrl("/b/two.txt"), FilePath::toUrl("/a.b/readme"),
                             FilePath::toUrl("/", FilePath::Kind::Directory) };
    for (const QUrl &url : kinds + same)
        EXPECT_TRUE(cache.apps(url).isEmpty());
    queue.settle();
    for (const QUrl &url : kinds + same)
        EXPECT_EQ(cache.apps(url), applications.installed.mid(0, 12));
    queue.settle();
    EXPECT_EQ(applications.asked, kinds);
}
