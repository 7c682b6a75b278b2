#include "StoreWorld.h"

#include <sys/mount.h>

namespace {

/// A small disk in place of the data folder.
class SmallDisk
{
public:
    explicit SmallDisk(const World &w)
        : m_path(w.paths().dataDir)
    {
        DataFiles::makeFolder(m_path);
        m_mounted = mount("tmpfs", m_path.constData(), "tmpfs", 0, "size=64k") == 0;
    }
    ~SmallDisk()
    {
        if (m_mounted)
            umount(m_path.constData());
    }
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool isMounted() const { return m_mounted; }
    void fill() const
    {
        QFile file(QFile::decodeName(m_path + "/ballast"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (file.write(QByteArray(1024, 'x')) > 0) { }
    }
    void empty() const { DataFiles::remove(m_path + "/ballast"); }
    void setWritable(bool writable) const
    {
        const unsigned long flags = MS_REMOUNT | (writable ? 0 : MS_RDONLY);
        EXPECT_EQ(mount("tmpfs", m_path.constData(), "tmpfs", flags, "size=64k"), 0);
    }

private:
    QByteArray m_path;
    bool m_mounted;
};

}

TEST(DiskTest, AFailingDiskLeavesMemoryInChargeAndTheOldFileWhole)
{
    const struct
    {
        const char *what;
        void (*spoil)(const SmallDisk &);
        void (*repair)(const SmallDisk &);
    } cases[] = {
        { "full", [](const SmallDisk &d) { d.fill(); }, [](const SmallDisk &d) { d.empty(); } },
        { "read-only", [](const SmallDisk &d) { d.setWritable(false); },
          [](const SmallDisk &d) { d.setWritable(true); } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        const SmallDisk disk(w);
        if (!disk.isMounted())
            GTEST_SKIP() << "mounting is not permitted";
        w.store().add({ w.file("before") });
        const auto saved = w.saved();
        c.spoil(disk);
        const auto names = DataFiles::namesIn(w.paths().dataDir);

        w.store().add(w.files(100));
        w.store().addText(QStringLiteral("no room"));
        w.store().addImage(QImage(9, 9, QImage::Format_RGB32));
        w.queue.settle();
        EXPECT_EQ(w.urls().size(), 101); // A snippet without its file is none.
        EXPECT_EQ(w.saved(), saved);
        EXPECT_TRUE(w.droppedNames().isEmpty());
        w.store().removeIds({ w.id(1) });
        EXPECT_TRUE(w.store().undoRemove());

        c.repair(disk);
        w.store().addText(QStringLiteral("room"));
        EXPECT_EQ(w.savedState()->shelves.first().items, w.store().items.value());
        EXPECT_EQ(w.urls().size(), 102);
        EXPECT_LE(DataFiles::namesIn(w.paths().dataDir).size(), names.size() + 1); // "dropped".
        w.end();
    }
}

TEST(DiskTest, AFullDiskAtTheStartDropsNothing)
{
    World w;
    const SmallDisk disk(w);
    if (!disk.isMounted())
        GTEST_SKIP() << "mounting is not permitted";
    const QByteArray old = R"([{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","url":")"
        + w.file("a").toEncoded() + R"(","addedAt":1}])";
    w.write(w.data("items.json"), old);
    disk.fill();
    EXPECT_EQ(w.urls(), QList { w.file("a") });
    // The older file is still what the next start reads.
    EXPECT_EQ(DataFiles::read(w.data("items.json")), old);
    w.restart();
    EXPECT_EQ(w.urls(), QList { w.file("a") });
    w.end();
}

TEST(DiskTest, ADataFolderThatCannotBeMadeIsDoneWithout)
{
    World w;
    w.write(w.paths().dataDir, "a file in its place");
    w.store().add(w.files(2));
    w.store().addText(QStringLiteral("x"));
    EXPECT_EQ(w.urls().size(), 2);
    DataFiles::remove(w.paths().dataDir);
    w.store().add({ w.file("third") });
    EXPECT_EQ(w.savedState()->shelves.first().items.size(), 3);
}

TEST(DiskTest, TheStateIsForTheUserAloneUnlessItWasNot)
{
    World w;
    w.store().add(w.files(1));
    struct stat information = {};
    ASSERT_EQ(stat(w.data("shelves.json").constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 0777, 0600u);
    ASSERT_EQ(chmod(w.data("shelves.json").constData(), 0640), 0);
    w.store().clear();
    ASSERT_EQ(stat(w.data("shelves.json").constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 0777, 0640u);
}

TEST(DiskTest, ManyEntriesAreManaged)
{
    World w;
    QList<QUrl> urls;
    for (int i = 0; i < 10000; ++i)
        urls.append(FilePath::toUrl(w.home() + "/some folder/picture " + QByteArray::number(i)));
    w.store().add(urls);
    w.store().add(urls);
    EXPECT_EQ(w.urls(), urls);
    QSet<QUuid> even;
    for (int i = 0; i < urls.size(); i += 2)
        even.insert(w.id(i));
    w.store().removeIds(even);
    EXPECT_EQ(w.urls().size(), 5000);
    EXPECT_EQ(w.savedState()->shelves.first().items.size(), 5000);
    EXPECT_FALSE(w.store().undoRemove()); // None of them has a file.
    w.restart();
    EXPECT_TRUE(w.urls().isEmpty());
}
