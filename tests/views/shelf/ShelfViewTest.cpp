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
    EXPECT_FALSE(w.headerButton(u"clear"_s));
    w.store().add(w.world.files(3));
    w.settle();
    EXPECT_EQ(w.handle()->toolTip(), u"drag_out_all_help"_s);
    EXPECT_EQ(w.view->dragOutItems().size(), 3);
    w.click(w.row(1));
    EXPECT_EQ(w.handle()->toolTip(), u"drag_out_selected_help"_s);
    EXPECT_EQ(w.view->dragOutItems(), QList<ShelfItem>({ w.item(1) }));
    w.headerButton(u"clear"_s)->click();
    w.settle();
    EXPECT_FALSE(w.handle());
}

TEST(ShelfViewTest, AToastStaysTwoSecondsUnlessTheSameTextEndsEarlier)
{
    for (const bool same : { false, true }) {
        SCOPED_TRACE(same);
        ViewWorld w;
        w.view->showToast(u"one"_s);
        w.world.queue.advance(1);
        w.view->showToast(same ? u"one"_s : u"two"_s);
        w.world.queue.advance(1.9);
        EXPECT_EQ(w.view->toastText().has_value(), !same);
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
