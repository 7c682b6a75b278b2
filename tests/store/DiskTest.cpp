#include "FullDisk.h"
#include "StoreWorld.h"

TEST(DiskTest, AFullDiskLeavesMemoryInChargeAndTheOldFileWhole)
{
    World w;
    w.store().add({ w.file("before") });
    w.store().addText(QStringLiteral("own"));
    const auto saved = w.saved();
    const auto files = w.files(100);
    {
        const FullDisk disk;
        w.store().add(files);
        w.store().addText(QStringLiteral("no room"));
        w.store().addImage(QImage(9, 9, QImage::Format_RGB32));
        w.queue.settle();
        EXPECT_EQ(w.urls().size(), 102); // A snippet without its file is none.
        w.store().removeIds({ w.id(0), w.id(1) });
        w.queue.advance(61);
        EXPECT_EQ(w.saved(), saved);
        EXPECT_EQ(w.droppedNames().size(), 1); // The state on disk still names it.
    }
    w.store().addText(QStringLiteral("room"));
    EXPECT_EQ(w.savedState()->shelves.first().items, w.store().items.value());
    EXPECT_EQ(w.urls().size(), 101);
    EXPECT_EQ(NativeFile::namesIn(w.paths().dataDir).size(), 2); // The state and "dropped".
}

TEST(DiskTest, AFullDiskAtTheStartDropsNothing)
{
    World w;
    const QByteArray old = R"([{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","url":")"
        + w.file("a").toEncoded() + R"(","addedAt":1}])";
    w.write(w.data("items.json"), old);
    const FullDisk disk;
    EXPECT_EQ(w.urls().size(), 1);
    EXPECT_EQ(w.read(w.data("items.json")), old); // Still what the next start reads.
    EXPECT_EQ(w.restart().items.value().size(), 1);
}

TEST(DiskTest, ADataFolderThatCannotBeMadeIsDoneWithout)
{
    World w;
    w.write(w.paths().dataDir, "a file in its place");
    w.store().add(w.files(2));
    EXPECT_EQ(w.urls().size(), 2);
    NativeFile::remove(w.paths().dataDir);
    w.store().add({ w.file("third") });
    EXPECT_EQ(w.savedState()->shelves.first().items.size(), 3);
}
