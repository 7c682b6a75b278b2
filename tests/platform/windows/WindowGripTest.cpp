#include "platform/linux/windows/WindowGrip.h"

#include "platform/fake/VirtualQueue.h"

#include <QMouseEvent>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

/// A window on a platform without an interactive move or resize of its own.
struct World
{
    World()
    {
        window.setGeometry(100, 100, 240, 300);
        window.setMinimumSize(210, 240);
        window.winId();
    }

    bool send(QEvent::Type type, const QPointF &at, Qt::MouseButton button, Qt::MouseButtons held)
    {
        const QMouseEvent event(type, at - window.pos(), at, button, held, Qt::NoModifier);
        return grip.handle(event);
    }
    bool press(const QPointF &at, Qt::MouseButton button = Qt::LeftButton)
    {
        return send(QEvent::MouseButtonPress, at, button, button);
    }
    bool drag(const QPointF &at)
    {
        return send(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton);
    }
    bool release(const QPointF &at)
    {
        return send(QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
    }

    VirtualQueue queue;
    QWidget window { nullptr, Qt::Tool | Qt::FramelessWindowHint };
    WindowGrip grip { window, queue };
};

}

TEST(WindowGripTest, AnEdgeThatIsDraggedResizesTheWindowAndTheOtherSideStays)
{
    const struct
    {
        QPointF from, by;
        QRect geometry;
    } cases[] = {
        { { 339, 250 }, { 30, 40 }, { 100, 100, 270, 300 } },
        { { 100, 250 }, { -20, 5 }, { 80, 100, 260, 300 } },
        { { 100, 250 }, { 200, 0 }, { 130, 100, 210, 300 } }, // Too far.
        { { 200, 102 }, { 0, 200 }, { 100, 160, 240, 240 } },
        { { 335, 395 }, { 10, 20 }, { 100, 100, 250, 320 } },
        { { 102, 110 }, { -10, -20 }, { 90, 80, 250, 320 } }, // A corner, on its long side.
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        World w;
        EXPECT_TRUE(w.press(c.from));
        EXPECT_TRUE(w.drag(c.from + c.by / 2));
        EXPECT_TRUE(w.drag(c.from + c.by));
        EXPECT_TRUE(w.grip.isHeld());
        EXPECT_TRUE(w.release(c.from + c.by));
        EXPECT_EQ(w.window.geometry(), c.geometry);
        EXPECT_FALSE(w.drag(c.from)); // It has been let go.
        EXPECT_EQ(w.window.geometry(), c.geometry);
    }
}

TEST(WindowGripTest, TheInsideBelongsToTheViewsUntilTheyMoveTheWindow)
{
    World w;
    EXPECT_FALSE(w.press({ 200, 250 }));
    EXPECT_FALSE(w.grip.isHeld());
    EXPECT_FALSE(w.press({ 100, 250 }, Qt::RightButton));
    EXPECT_FALSE(w.press({ 200, 110 }));
    w.grip.move();
    EXPECT_TRUE(w.drag({ 230, 150 }));
    EXPECT_EQ(w.window.geometry(), QRect(130, 140, 240, 300));
    w.grip.release(); // The window was put elsewhere meanwhile.
    EXPECT_FALSE(w.drag({ 250, 170 }));
    EXPECT_EQ(w.window.geometry(), QRect(130, 140, 240, 300));
}

TEST(WindowGripTest, AnEdgeShowsItsCursorOverThatOfTheViewBelow)
{
    World w;
    QWidget view(&w.window);
    view.setGeometry(w.window.rect());
    view.setCursor(Qt::OpenHandCursor);
    const auto cursorAt = [&](const QPointF &at) {
        EXPECT_FALSE(w.send(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton));
        w.window.windowHandle()->setCursor(view.cursor()); // As the toolkit does when it enters.
        w.queue.settle();
        return w.window.windowHandle()->cursor().shape();
    };
    EXPECT_EQ(cursorAt({ 101, 250 }), Qt::SizeHorCursor);
    EXPECT_EQ(cursorAt({ 338, 398 }), Qt::SizeFDiagCursor);
    EXPECT_EQ(cursorAt({ 338, 110 }), Qt::SizeBDiagCursor);
    EXPECT_EQ(cursorAt({ 200, 398 }), Qt::SizeVerCursor);
    EXPECT_EQ(cursorAt({ 200, 250 }), Qt::OpenHandCursor);
}
