#include "platform/linux/BookmarkCoding.h"
#include "platform/linux/MountTable.h"

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
        const auto decoded = BookmarkCoding::decode(bytes.left(size));
        EXPECT_TRUE(!decoded || BookmarkCoding::encode(*decoded) == bytes.left(size));
        for (const int value : { 0, 2, 0x2f, 0x7f, 0xff }) {
            QByteArray broken = bytes;
            broken[size] = static_cast<char>(value);
            const auto other = BookmarkCoding::decode(broken);
            EXPECT_TRUE(!other || BookmarkCoding::encode(*other) == broken);
            EXPECT_TRUE(size != 0 || !other) << "another version";
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
    const struct
    {
        const char *path;
        const char *type;
        bool remote;
    } cases[] = {
        { "/", "ext4", false },
        { "/mntx/a", "ext4", false },
        { "/mnt", "btrfs", false },
        { "/mnt/my nas", "btrfs", false },
        { "/mnt/my nas\\/a/b", "nfs4", true },
        { "/auto/a", "fuse.sshfs", true },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.path);
        ASSERT_NE(mounts.of(c.path), nullptr);
        EXPECT_EQ(mounts.of(c.path)->type, c.type);
        EXPECT_EQ(mounts.isRemote(c.path), c.remote);
    }
    EXPECT_EQ(mounts.of("/mnt/a")->device, makedev(0, 41));
    EXPECT_EQ(mounts.of("/mnt/a")->root, "/sub");
    EXPECT_EQ(Mounts().of("/a"), nullptr);
    EXPECT_NE(MountTable("/proc/self/mountinfo").current()->of("/"), nullptr);
}
