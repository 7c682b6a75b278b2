#include "fileops/FileOps.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
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
    const QList<QUrl> urls { FilePath::toUrl(base + "/n\xE4me.txt"),
                             FilePath::toUrl(base + "/Good.WEBLOC"),
                             FilePath::toUrl(base + "/bad.webloc"),
                             FilePath::toUrl(base + "/gone.webloc") };
    VirtualQueue queue;
    VirtualWorkers workers(queue);
    FakeApplications applications;
    FileOps::open(urls, applications, workers);
    EXPECT_TRUE(applications.opened.isEmpty()); // Not while the caller waits.
    queue.settle();
    EXPECT_EQ(applications.opened, (QList<QUrl> { urls[0], address, urls[2], urls[3] }));
}
