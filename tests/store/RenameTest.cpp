#include "store/StoreWorld.h"

#include <sys/stat.h>

namespace {

/// The reason for which it failed; empty if it did not.
QString renamed(World &w, const QUuid &id, const QString &name)
{
    QString reason;
    w.store().rename(id, name, [&](const QString &why) { reason = why; });
    w.queue.settle();
    return reason;
}

}

TEST(RenameTest, TheEntryFollowsItsFile)
{
    World w;
    const QByteArray folder = w.home() + "/folder.d";
    ASSERT_EQ(mkdir(folder.constData(), 0700), 0);
    w.store().add({ w.file("n\xE4me.txt"), FilePath::toUrl(folder, FilePath::Kind::Directory) });
    const auto before = w.store().items.value();
    EXPECT_EQ(renamed(w, w.id(0), QStringLiteral("näme.txt")), QString());
    EXPECT_EQ(renamed(w, w.id(1), QStringLiteral("new")), QString());
    EXPECT_EQ(renamed(w, QUuid::createUuid(), QStringLiteral("x")), QString());

    const QByteArray file = w.home() + "/n\xC3\xA4me.txt";
    auto expected = before;
    expected[0].url = FilePath::toUrl(file);
    expected[0].bookmark = FakeBookmarks::bookmarkOf(file);
    expected[1].url = FilePath::toUrl(w.home() + "/new", FilePath::Kind::Directory);
    expected[1].bookmark = FakeBookmarks::bookmarkOf(w.home() + "/new");
    EXPECT_EQ(w.store().items.value(), expected);
    EXPECT_EQ(w.savedState()->shelves.first().items, expected);
    EXPECT_EQ(World::read(file), "content");
    EXPECT_FALSE(FilePath::exists(w.home() + "/n\xE4me.txt"));
}

TEST(RenameTest, TheEntryIsFoundWhereverItIsByThen)
{
    const std::pair<const char *, void (*)(World &)> cases[] = {
        { "on its shelf, which was left", [](World &w) { w.store().newShelf(); } },
        { "on another shelf", [](World &w) { w.store().move({ w.id(0) }, std::nullopt); } },
        { "on a closed shelf",
          [](World &w) {
              w.store().newShelf();
              w.store().closeShelf(w.store().shelves.value().first().id);
          } },
        { "in the stash", [](World &w) { w.store().clear(); } },
    };
    for (const auto &[what, leave] : cases) {
        SCOPED_TRACE(what);
        World w;
        w.store().add({ w.file("a") });
        w.store().rename(w.id(0), QStringLiteral("b"), nullptr);
        EXPECT_TRUE(FilePath::exists(w.home() + "/a")); // Not on the main thread.
        leave(w);
        w.queue.settle();
        EXPECT_TRUE(FilePath::exists(w.home() + "/b"));
        w.store().undoRemove();
        QList<QUrl> urls;
        const auto state = *w.savedState();
        for (const Shelf &shelf : state.shelves + state.closed) {
            for (const ShelfItem &item : shelf.items)
                urls.append(item.url);
        }
        EXPECT_EQ(urls, QList { w.file("b") });
    }
}

TEST(RenameTest, AFailureChangesNothingAndSaysWhy)
{
    World w;
    w.store().add({ w.file("a"), w.file("b") });
    ASSERT_EQ(symlink("/nowhere", (w.home() + "/dangling").constData()), 0);
    const auto before = w.store().items.value();
    const auto saved = w.saved();
    for (const char *name : { "b", "dangling" })
        EXPECT_EQ(renamed(w, w.id(0), QLatin1String(name)), QStringLiteral("rename_exists"));
    EXPECT_EQ(renamed(w, w.id(0), QString(300, u'x')), qt_error_string(ENAMETOOLONG));
    EXPECT_EQ(w.store().items.value(), before);
    EXPECT_EQ(w.saved(), saved);
    EXPECT_EQ(World::read(w.home() + "/a"), "content");
    NativeFile::remove(w.home() + "/a");
    EXPECT_EQ(renamed(w, w.id(0), QStringLiteral("c")), qt_error_string(ENOENT));
}
