#include "platform/linux/x11/X11Screens.h"

#include <gtest/gtest.h>

namespace {

using Edge = Strut::Edge;

// Two monitors side by side, the right one hanging lower, on a root of 1280 by 800.
const QRect left(0, 0, 600, 500);
const QRect right(600, 100, 680, 700);
const QSize root(1280, 800);
constexpr int whole = 32767; // A strut that tells no stretch.

TEST(X11ScreensTest, AStrutCutsTheMonitorThatItStandsOn)
{
    struct Case
    {
        const char *what;
        QList<Strut> struts;
        QRect leftVisible, rightVisible;
    };
    const Case cases[] = {
        { "none", {}, left, right },
        { "top of the left one", { { Edge::Top, 30, 0, 599 } }, QRect(0, 30, 600, 470), right },
        { "the whole top, where the right one does not reach",
          { { Edge::Top, 30, 0, whole } },
          QRect(0, 30, 600, 470),
          right },
        { "top of the right one: 100 above it are no monitor",
          { { Edge::Top, 124, 600, 1279 } },
          left,
          QRect(600, 124, 680, 676) },
        { "bottom of the left one, measured from the root's edge",
          { { Edge::Bottom, 340, 0, 599 } },
          QRect(0, 0, 600, 460),
          right },
        { "bottom of the right one",
          { { Edge::Bottom, 40, 600, 1279 } },
          left,
          QRect(600, 100, 680, 660) },
        { "between them, on the right one",
          { { Edge::Left, 650, 100, 799 } },
          left,
          QRect(650, 100, 630, 700) },
        { "between them, on the left one",
          { { Edge::Right, 720, 0, 499 } },
          QRect(0, 0, 560, 500),
          right },
        { "the larger of two",
          { { Edge::Right, 20, 100, 799 }, { Edge::Right, 50, 100, 799 } },
          left,
          QRect(600, 100, 630, 700) },
        { "one that would take all", { { Edge::Left, 600, 0, whole } }, left, right },
        { "two that would take all together",
          { { Edge::Left, 400, 0, 499 }, { Edge::Right, 980, 0, 499 } },
          left,
          right },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(withoutStruts(left, root, c.struts), c.leftVisible);
        EXPECT_EQ(withoutStruts(right, root, c.struts), c.rightVisible);
    }
}

TEST(X11ScreensTest, AWorkAreaCountsForTheMonitorThatHoldsIt)
{
    const QRect under(600, 130, 680, 670);
    EXPECT_EQ(workArea(right, { left, under }), under);
    EXPECT_EQ(workArea(left, { under, QRect(0, 0, 1280, 800), QRect() }), std::nullopt);
}

TEST(X11ScreensTest, PointsAndPixelsMeetInEachScreensCorner)
{
    using namespace NativeGeometry;
    // What the toolkit itself says under a scale of 1 on the left and 2 on the right.
    const QList<ScreenScale> scales { { left, 1 }, { right, 2 } };
    const std::pair<QPointF, QPointF> places[] = {
        { { 100, 50 }, { 100, 50 } },        { { 599, 499 }, { 599, 499 } },
        { { 601, 101 }, { 600.5, 100.5 } },  { { 1000, 600 }, { 800, 350 } },
        { { 1279, 799 }, { 939.5, 449.5 } }, { { 600, 100 }, { 600, 100 } },
    };
    for (const auto &[native, points] : places) {
        EXPECT_EQ(toPoints(native, scales), points);
        EXPECT_EQ(toNative(points, scales), native);
    }
    EXPECT_EQ(toPoints(QPointF(1290, 400), scales), QPointF(945, 250)); // Beside the right one.
    EXPECT_EQ(toPoints(QPointF(5, 6), {}), QPointF(5, 6));
    EXPECT_EQ(toPoints(QRectF(650, 100, 630, 700), scales.last()), QRectF(625, 100, 315, 350));
}

}
