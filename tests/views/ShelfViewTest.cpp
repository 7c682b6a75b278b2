#include "platform/fake/FakeItemProvider.h"
#include "views/ViewWorld.h"

#include <QImage>

namespace {

QImage shown(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    widget.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

}

TEST(ShelfViewTest, TheHeaderOffersOnlyWhatThereIs)
{
    ViewWorld w;
    EXPECT_FALSE(w.handle());
    EXPECT_FALSE(w.headerButton(QStringLiteral("clear")));
    EXPECT_FALSE(w.list().isVisible());

    w.store().add(w.world.files(3));
    w.settle();
    ASSERT_TRUE(w.handle());
    EXPECT_TRUE(w.list().isVisible());
    EXPECT_EQ(w.handle()->toolTip(), QStringLiteral("drag_out_all_help"));
    EXPECT_EQ(w.view->dragOutItems().size(), 3);
    w.click(w.row(1));
    EXPECT_EQ(w.handle()->toolTip(), QStringLiteral("drag_out_selected_help"));
    EXPECT_EQ(w.view->dragOutItems(), QList<ShelfItem>({ w.item(1) }));

    w.headerButton(QStringLiteral("clear"))->click();
    w.settle();
    EXPECT_FALSE(w.handle());
    EXPECT_FALSE(w.list().isVisible());
}

TEST(ShelfViewTest, TheHandleDragsLinksAsAddressesAndReportsWhatWasTaken)
{
    ViewWorld w(2);
    w.store().addLink(QUrl(QStringLiteral("https://example.org/")));
    w.settle();
    QList<QList<QUrl>> taken;
    w.view->onDraggedOut = [&](const QList<QUrl> &urls) { taken.append(urls); };
    const QPoint at = w.handle()->mapTo(w.view.get(), w.handle()->rect().center());
    w.press(at);
    w.move(at + QPoint(2, 2)); // 2.8 points.
    EXPECT_TRUE(w.session.begun.empty());
    w.move(at + QPoint(3, 0));
    w.release(at + QPoint(3, 0));
    ASSERT_EQ(w.session.begun.size(), 1U);
    QList<QUrl> dragged;
    for (const auto &item : w.session.begun[0].items)
        dragged.append(item.url);
    EXPECT_EQ(dragged,
              QList<QUrl>(
                  { w.item(0).url, w.item(1).url, QUrl(QStringLiteral("https://example.org/")) }));
    EXPECT_EQ(w.session.begun[0].at, QPointF(at));
    w.session.begun[0].onEnd(true);
    EXPECT_EQ(taken, QList<QList<QUrl>>({ dragged }));
}

TEST(ShelfViewTest, AToastStaysTwoSecondsUnlessTheSameTextEndsEarlier)
{
    struct Case
    {
        const char *what;
        QString second;
        bool stays; // Beyond the end of the first.
    };
    const Case cases[] = {
        { "another text", QStringLiteral("two"), true },
        { "the same text", QStringLiteral("one"), false },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        ViewWorld w;
        w.view->showToast(QStringLiteral("one"));
        w.world.queue.advance(1);
        w.view->showToast(c.second);
        EXPECT_EQ(w.view->toastText(), c.second);
        w.world.queue.advance(1.1);
        EXPECT_EQ(w.view->toastText().has_value(), c.stays);
        w.world.queue.advance(0.8);
        EXPECT_EQ(w.view->toastText().has_value(), c.stays);
        w.world.queue.advance(0.2);
        EXPECT_FALSE(w.view->toastText());
    }
    ViewWorld w(2);
    for (int row = 0; row < 2; ++row) { // The same notice again shows again.
        w.store().removeIds({ w.item(0).id });
        EXPECT_EQ(w.view->toastText(), w.world.notice());
        w.world.queue.advance(3);
    }
}

TEST(ShelfViewTest, ThePreviewFollowsItemsAndSelection)
{
    ViewWorld w(4);
    EXPECT_EQ(w.ql.urls, w.world.urls());
    EXPECT_EQ(w.ql.startIndex, 0);
    w.click(w.row(2));
    EXPECT_EQ(w.ql.urls, w.world.urls());
    EXPECT_EQ(w.ql.startIndex, 2);
    w.click(w.row(1), Qt::ControlModifier);
    EXPECT_EQ(w.ql.urls, QList<QUrl>({ w.item(1).url, w.item(2).url }));
    EXPECT_EQ(w.ql.startIndex, 0);
    w.store().clear();
    w.settle();
    EXPECT_TRUE(w.ql.urls.isEmpty());
}

TEST(ShelfViewTest, ADropIsAddedUnlessTheViewIsGone)
{
    for (const bool gone : { false, true }) {
        SCOPED_TRACE(gone);
        ViewWorld w;
        const auto file = std::make_shared<FakeItemProvider>();
        file->isFile = true;
        file->url = w.world.file("dropped.txt");
        w.view->handleDrop({ file });
        if (gone)
            w.view.reset();
        file->answer();
        w.world.queue.settle();
        EXPECT_EQ(w.store().items.value().size(), gone ? 0 : 1);
    }
}

TEST(ShelfViewTest, MotionEndsWhereAFreshViewBegins)
{
    ViewWorld w(6, Motion::Full);
    const auto edit = [&](auto change) {
        auto items = w.store().items.value();
        change(items);
        w.store().items.set(items);
        w.world.queue.advance(0.1); // The next change comes while rows still move.
        QApplication::processEvents();
    };
    const auto before = shown(*w.view);
    edit([](auto &items) { items.removeAt(1); });
    EXPECT_NE(shown(*w.view), before);
    edit([](auto &items) { items.move(0, 3); });
    edit([&](auto &items) { items.insert(2, World::item(w.world.file("new"))); });
    edit([](auto &items) { items.removeAt(0); });
    w.world.queue.advance(1);
    QApplication::processEvents();
    const auto after = shown(*w.view);

    ShelfView fresh(w.store(), w.settings, w.texts, w.ql, w.icons, w.session, w.world.queue,
                    ViewWorld::resources());
    fresh.resize(w.view->size());
    fresh.show();
    QApplication::processEvents();
    EXPECT_EQ(after, shown(fresh));
}
