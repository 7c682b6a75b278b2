#include "platform/linux/files/FileLanes.h"

#include "base/NativeFile.h"

#include <QSemaphore>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

TEST(FileLanes, AMountThatHangsHoldsUpItselfAloneHoweverItIsReached)
{
    const QTemporaryDir directory;
    const QByteArray root = directory.path().toUtf8();
    for (const char *folder : { "/dead", "/other", "/near" })
        ASSERT_TRUE(NativeFile::makeFolder(root + folder));
    ASSERT_EQ(::symlink("dead", (root + "/link").constData()), 0);
    ASSERT_EQ(::symlink("../link/x", (root + "/near/file").constData()), 0);
    const QByteArray table = root + "/mounts";
    ASSERT_TRUE(NativeFile::writeNew(table,
                                     "1 0 0:1 / / rw - ext4 disk rw\n2 1 0:2 / " + root
                                         + "/dead rw - nfs4 server rw\n3 1 0:3 / " + root
                                         + "/other rw - fuse.sshfs server rw\n"));
    QSemaphore ended;
    QSemaphore server;
    FileLanes lanes(table);
    EXPECT_TRUE(lanes.isRemote(root + "/dead/x"));
    for (int i = 0; i < 8; ++i) {
        for (const char *path : { "/dead/x", "/link/x", "/near/file" }) {
            lanes.run(root + path, [&] {
                server.acquire();
                ended.release();
            });
        }
    }
    for (const char *path : { "/near/other", "/other/x", "/none/x", "/link" })
        lanes.run(root + path, [&] { ended.release(); });
    EXPECT_TRUE(ended.tryAcquire(3, 10'000)) << "all but what lies on the dead one";
    EXPECT_FALSE(ended.tryAcquire());
    server.release(24);
    EXPECT_TRUE(ended.tryAcquire(25, 10'000));
    lanes.run(root + "/dead/x", [&] {
        ended.release();
        server.acquire();
    });
    ASSERT_TRUE(ended.tryAcquire(1, 10'000));
    EXPECT_FALSE(lanes.end()) << "what hangs at the end is told of";
    server.release();
}
