#include "platform/linux/files/BookmarkCoding.h"
#include "platform/linux/files/MountTable.h"

#include <gtest/gtest.h>

#include <sys/sysmacros.h>

TEST(BookmarkCodingTest, BytesThatWereNotEncodedAreNoBookmark)
{
    const BookmarkRecord record { { makedev(8, 3), ~ino_t(0), -1, 999'999'999, true },
                                  quint64(1) << 63,
                                  "/\xff \n" };
    const QByteArray bytes = BookmarkCoding::encode(record);
    EXPECT_EQ(BookmarkCoding::decode(bytes), record);
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        for (const char value : { '\0', '\2', '/', '\x7f', '\xff' }) {
            QByteArray changed = bytes;
            changed[size] = value;
            for (const QByteArray &broken : { bytes.left(size) + value, changed }) {
                const auto other = BookmarkCoding::decode(broken);
                EXPECT_TRUE(!other || BookmarkCoding::encode(*other) == broken);
            }
        }
    }
    for (const char *path : { "", "relative", "/a//b", "/a/../b", "/a/" }) {
        BookmarkRecord other = record;
        other.path = path;
        EXPECT_FALSE(BookmarkCoding::decode(BookmarkCoding::encode(other))) << path;
    }
}

TEST(MountTableTest, ALinesFieldsAreReadAndTheUppermostMountCounts)
{
    const Mounts mounts("22 1 8:2 / / rw shared:1 - ext4 /dev/sda2 rw\n"
                        "23 22 0:40 / /mnt/my\\040nas\\134 rw shared:2 master:3 - nfs4 host:/ rw\n"
                        "24 22 0:41 /sub /mnt rw - btrfs /dev/sdb rw\n"
                        "25 22 0:42 / /auto rw - autofs systemd-1 rw\n"
                        "26 25 0:43 / /auto rw - fuse.sshfs host: rw\n"
                        "garbage\n27 22 0:44 / /short rw",
                        1);
    EXPECT_EQ(mounts.all().size(), 5U);
    const std::pair<const char *, QByteArray> local[] = {
        { "/", "ext4" }, { "/mntx/a", "ext4" }, { "/mnt", "btrfs" }, { "/mnt/my nas", "btrfs" }
    };
    for (const auto &[path, type] : local)
        EXPECT_TRUE(mounts.of(path)->type == type && !mounts.isRemote(path)) << path;
    const std::pair<const char *, QByteArray> remote[]
        = { { "/mnt/my nas\\/a/b", "nfs4" }, { "/auto/a", "fuse.sshfs" } };
    for (const auto &[path, type] : remote)
        EXPECT_TRUE(mounts.of(path)->type == type && mounts.isRemote(path)) << path;
    EXPECT_EQ(mounts.of("/mnt/a")->device, makedev(0, 41));
    EXPECT_EQ(mounts.of("/mnt/a")->root, "/sub");
    EXPECT_EQ(Mounts().of("/a"), nullptr);
    EXPECT_NE(MountTable("/proc/self/mountinfo").current()->of("/"), nullptr);
}
