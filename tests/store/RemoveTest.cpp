#include "StoreWorld.h"

namespace {

QString q(const char *text)
{
    return QString::fromUtf8(text);
}

/// Adds a snippet and gives its file.
QByteArray addSnippet(World &w)
{
    w.store().addText(q("snippet"));
    return FilePath::fromUrl(w.urls().last());
}

}

TEST(RemoveTest, AnEntryLeavesAtOnceAndItsOwnFileAMinuteLater)
{
    World w;
    const QUrl file = w.file("a");
    w.store().add({ file });
    const QByteArray snippet = addSnippet(w);
    w.sounds.played.clear();
    QList<ShelfItem> removed;
    w.store().onRemoved = [&](const auto &items) { removed = items; };
    const auto before = w.store().items.value();

    w.store().removeIds({ w.id(0), w.id(1), QUuid::createUuid() });
    EXPECT_TRUE(w.store().items.value().isEmpty());
    EXPECT_TRUE(w.savedState()->shelves.first().items.isEmpty());
    EXPECT_EQ(removed, before);
    EXPECT_EQ(w.notice(), q("2 removed"));
    EXPECT_EQ(w.sounds.played, std::vector { Sound::Tink });

    w.queue.advance(59.9);
    EXPECT_TRUE(FilePath::exists(snippet));
    w.queue.advance(0.2);
    EXPECT_FALSE(FilePath::exists(snippet));
    EXPECT_TRUE(FilePath::exists(FilePath::fromUrl(file)));
    EXPECT_FALSE(w.store().undoRemove());
}

TEST(RemoveTest, TransfersAndSelectionGoWithTheEntry)
{
    World w;
    w.store().add(w.files(3));
    const QUuid gone = w.id(0);
    const QUuid stays = w.id(1);
    QList<int> cancelled;
    w.store().uploadCancels = { { gone, [&] { cancelled.append(0); } },
                                { stays, [&] { cancelled.append(1); } },
                                { QUuid::createUuid(), [&] { cancelled.append(2); } } };
    w.store().uploading.set({ gone, stays });
    w.store().progress.set({ { gone, 0.5 }, { stays, 0.5 } });
    w.store().selectAll();

    w.store().removeIds({ gone });
    EXPECT_EQ(cancelled, QList { 0 });
    EXPECT_EQ(w.store().uploading.value(), QSet { stays });
    EXPECT_EQ(w.store().progress.value().keys(), QList { stays });
    EXPECT_EQ(w.store().selection.value(), (QSet { stays, w.id(1) }));

    w.store().removeIds(w.store().selection.value()); // The very set that changes.
    EXPECT_TRUE(w.store().items.value().isEmpty() && w.store().selection.value().isEmpty());
    w.store().undoRemove();
    w.store().clear();
    EXPECT_EQ(cancelled, (QList { 0, 1, 2 }));
    EXPECT_TRUE(w.store().uploading.value().isEmpty() && w.store().progress.value().isEmpty());
}

TEST(RemoveTest, OnlyFilesInTheStoresOwnFolderAreDeleted)
{
    World w;
    w.write(w.home() + "/documents/precious", "");
    w.write(w.dropped("own/inner"), "");
    w.write(w.dropped("a"), "");
    ASSERT_EQ(symlink((w.home() + "/documents").constData(), w.dropped("link").constData()), 0);
    QList<QUrl> urls;
    // The second leads through a link to the user's folder; the last is the folder itself.
    for (const char *path : { "dropped/../../documents/precious", "dropped/link/precious",
                              "dropped/link", "dropped/own", "x/../dropped/./a", "dropped" })
        urls.append(QUrl::fromEncoded("file://" + w.data(path)));
    w.store().add(urls);
    ASSERT_EQ(w.urls().size(), urls.size());
    w.store().clear();
    w.queue.advance(61);
    EXPECT_TRUE(FilePath::exists(w.home() + "/documents/precious"));
    EXPECT_TRUE(FilePath::exists(w.data("dropped")));
    EXPECT_TRUE(w.droppedNames().isEmpty());
}

TEST(ExpiryTest, OldEntriesLeaveForGoodUnlessPinnedOrInTransfer)
{
    World w;
    const double now = w.queue.now();
    const auto entry = [&](const char *name, double age) {
        w.write(w.dropped(name), "");
        return World::item(FilePath::toUrl(w.dropped(name)), now - age);
    };
    Shelf current = World::shelf({ entry("old", 101), entry("exact", 100), entry("busy", 200) });
    Shelf other = World::shelf({ entry("other old", 101), entry("young", 1) });
    Shelf pinned = World::shelf({ entry("pinned", 1000) });
    pinned.pinned = true;
    const Shelf closed = World::shelf({ entry("closed", 1000) });
    w.writeState({ current.id, { current, other, pinned }, { closed } });
    w.store().uploading.set({ current.items.at(2).id });
    w.store().selectAll();
    QList<ShelfItem> removed;
    w.store().onRemoved = [&](const auto &items) { removed = items; };

    for (const double never : { 0.0, -1.0, double(NAN) })
        w.store().pruneExpired(never);
    EXPECT_EQ(w.store().items.value().size(), 3);
    w.store().pruneExpired(100);

    EXPECT_EQ(removed, (QList { other.items.at(0), current.items.at(0) }));
    current.items.removeFirst();
    other.items.removeFirst();
    EXPECT_EQ(w.savedState(), (ShelfState { current.id, { current, other, pinned }, { closed } }));
    EXPECT_EQ(w.store().selection.value(),
              (QSet { current.items.at(0).id, current.items.at(1).id }));
    EXPECT_EQ(w.droppedNames(),
              (QList<QByteArray> { "busy", "closed", "exact", "pinned", "young" }));
    EXPECT_FALSE(w.store().notice.value());
    EXPECT_TRUE(w.sounds.played.empty());
    EXPECT_FALSE(w.store().undoRemove());

    w.store().uploading.set({});
    w.store().pruneExpired(100);
    EXPECT_EQ(w.urls(), QList { current.items.at(0).url });
    w.store().switchTo(pinned.id);
    w.store().pruneExpired(100);
    EXPECT_EQ(w.urls().size(), 1);
}
