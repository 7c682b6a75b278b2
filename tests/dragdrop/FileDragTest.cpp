#include "dragdrop/FileDrag.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakeIcons.h"

#include <gtest/gtest.h>

namespace {

const Address fileUrl(QUrl(QStringLiteral("file:///a")));
const Address webUrl(QUrl(QStringLiteral("https://example.org/")));

struct RowWorld
{
    FakeDragSession session;
    FakeIcons icons;
    RowDrag drag { session, icons };
    std::optional<QList<Address>> pressed = QList { fileUrl, webUrl };
    int presses = 0;
    QList<Address> out;

    RowWorld()
    {
        drag.beginPress = [this] { ++presses; };
        drag.dragURLs = [this] { return pressed; };
        drag.onDraggedOut = [this](const QList<Address> &urls) { out = urls; };
    }
    bool down(double x, double y)
    {
        return drag.routeRowDrag(WindowButtonEvent::LeftDown, { x, y });
    }
    bool move(double x, double y)
    {
        return drag.routeRowDrag(WindowButtonEvent::LeftDragged, { x, y });
    }
    bool up() { return drag.routeRowDrag(WindowButtonEvent::LeftUp, {}); }
};

}

TEST(FileDragTest, IconsFanOutDownAndRightAndOnlyEightAreDrawn)
{
    FakeDragSession session;
    FakeIcons icons;
    FileDrag::begin({}, session, icons, { 100, 50 }, [](bool) { FAIL(); });
    EXPECT_TRUE(session.begun.empty());
    FileDrag::begin(QList<Address>(10, fileUrl), session, icons, { 100, 50 }, [](bool) {});
    const auto &items = session.begun.at(0).items;
    ASSERT_EQ(items.size(), 10);
    EXPECT_EQ(items[0].frame, QRectF(80, 30, 40, 40));
    EXPECT_EQ(items[2].frame, QRectF(88, 38, 40, 40));
    EXPECT_FALSE(items[7].icon.isNull());
    EXPECT_TRUE(items[8].icon.isNull());
}

TEST(RowDragTest, ADragBeginsThreePointsFromThePressAndIsTheOnlyOne)
{
    RowWorld w;
    EXPECT_FALSE(w.down(10, 10)); // The row must get the press.
    EXPECT_EQ(w.presses, 1);
    EXPECT_TRUE(w.move(12.9, 10)); // Swallowed: nothing starts, nothing scrolls.
    EXPECT_TRUE(w.session.begun.empty());
    EXPECT_TRUE(w.move(10, 13));
    EXPECT_TRUE(w.move(40, 40));
    ASSERT_EQ(w.session.begun.size(), 1U);
    EXPECT_EQ(w.session.begun[0].at, QPointF(10, 10));

    EXPECT_FALSE(w.up());
    w.down(0, 0);
    w.move(0, 5);
    w.pressed.reset(); // Outside all rows.
    w.down(10, 10);
    EXPECT_FALSE(w.move(200, 200));
    EXPECT_EQ(w.session.begun.size(), 2U);
}

TEST(RowDragTest, OnlyWhatATargetTookCountsAsDraggedOutAlsoAfterThePanelsEnd)
{
    auto w = std::make_unique<RowWorld>();
    w->down(0, 0);
    w->move(5, 0);
    w->pressed = QList { webUrl }; // Another selection by the time the drag ends.
    const auto end = w->session.begun.at(0).onEnd;
    end(false);
    EXPECT_EQ(w->out, QList<Address>());
    end(true);
    EXPECT_EQ(w->out, QList({ fileUrl, webUrl }));
    w->drag.onDraggedOut = [](const QList<Address> &) { FAIL(); };
    w.reset();
    end(true);
}

TEST(HandleDragTest, OneDragForEachPressWithWhatIsThereWhenItBegins)
{
    FakeDragSession session;
    FakeIcons icons;
    HandleDrag handle(session, icons);
    QList<Address> list { fileUrl };
    handle.urls = [&] { return list; };
    handle.mouseDragged({ 50, 50 }); // No press before it.
    handle.mouseDown({ 0, 0 });
    handle.mouseDragged({ 2, 2 });
    EXPECT_TRUE(session.begun.empty());
    list = { fileUrl, webUrl };
    handle.mouseDragged({ 0, 3 });
    handle.mouseDragged({ 0, 30 });
    handle.mouseDown({ 0, 0 });
    handle.mouseUp();
    handle.mouseDragged({ 9, 9 });
    ASSERT_EQ(session.begun.size(), 1U);
    EXPECT_EQ(session.begun[0].items.size(), 2);
}
