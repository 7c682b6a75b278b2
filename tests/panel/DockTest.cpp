#include "panel/DockTab.h"
#include "panel/ShelfPanel.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakePanelWindow.h"
#include "platform/fake/FakePointerMonitor.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeScreens.h"
#include "platform/fake/FakeTabWindow.h"
#include "platform/fake/VirtualQueue.h"
#include "store/QuickLookController.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

// How GoogleTest prints them.
static void PrintTo(const QRectF &rect, std::ostream *out)
{
    *out << rect.x() << "," << rect.y() << " " << rect.width() << "x" << rect.height();
}

namespace {

const Screen left { QRectF(0, 0, 1000, 800), QRectF(0, 30, 1000, 770) };
const Screen right { QRectF(1000, 0, 800, 600), QRectF(1000, 0, 800, 600) };
const QRectF topRight(736, 54, 240, 300); // Where a summoned panel stands on the left screen.
const QRectF topRightHome(750, 54, 240, 300);

/// A panel that may dock, on two screens side by side, with the pointer away from it.
struct World
{
    World()
    {
        screens.screens = { left, right };
        pointer.at = QPointF(100, 700);
        panel.attachDock(tab);
        panel.setDockEnabled(true);
        panel.canDock = [this] { return items > 0; };
        panel.hasModalWindow = [this] {
            ++checks;
            return modal;
        };
        panel.isPreviewVisible = [this] { return preview; };
    }

    void summonAndWait()
    {
        panel.summon();
        queue.advance(1);
    }
    void dockAndWait()
    {
        summonAndWait();
        panel.dock();
        queue.advance(1);
    }
    /// Seconds until it docks by itself; none if it does not within that many.
    std::optional<double> secondsUntilDocked(double most = 10)
    {
        const double start = queue.uptime();
        while (!panel.isDocked() && queue.uptime() < start + most)
            queue.advance(0.01);
        return panel.isDocked() ? std::optional(queue.uptime() - start) : std::nullopt;
    }

    VirtualQueue queue;
    FakePanelWindow window;
    FakeTabWindow tabWindow;
    FakeScreens screens;
    FakePointerMonitor pointer;
    FakePreferences preferences;
    FakeDragSession session;
    FakeIcons icons;
    QuickLookController ql;
    DockTab tab { tabWindow, queue };
    ShelfPanel panel { window, screens, pointer, preferences, session, icons, queue, ql };
    int items = 1;
    bool modal = false;
    bool preview = false;
    int checks = 0;
};

void expectWithin(std::optional<double> seconds, double least, double most)
{
    ASSERT_TRUE(seconds);
    EXPECT_GE(*seconds, least - 1e-6);
    EXPECT_LE(*seconds, most + 0.011);
}

}

TEST(DockTest, APanelInUseStaysAndDocksOnceItIsLeftAlone)
{
    struct Case
    {
        const char *what;
        std::function<void(World &)> use, end;
    };
    const auto away = [](World &w) { w.pointer.at = QPointF(100, 700); };
    const auto at
        = [](double x, double y) { return [=](World &w) { w.pointer.at = QPointF(x, y); }; };
    const Case cases[] = {
        { "pointer on it", at(800, 100), away },
        { "pointer at its margin", at(730, 360), away },
        { "pointer at the screen's side beside it", at(999, 100), away },
        { "pointer just beyond that side", at(1002, 100), away },
        { "left button", [](World &w) { w.pointer.buttons = 1; },
          [](World &w) { w.pointer.buttons = 0; } },
        { "another button", [](World &w) { w.pointer.buttons = 4; },
          [](World &w) { w.pointer.buttons = 0; } },
        { "menu", [](World &w) { w.panel.menuOpened(); }, [](World &w) { w.panel.menuClosed(); } },
        { "dialog", [](World &w) { w.modal = true; }, [](World &w) { w.modal = false; } },
        { "preview", [](World &w) { w.preview = true; }, [](World &w) { w.preview = false; } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.summonAndWait();
        c.use(w);
        EXPECT_FALSE(w.secondsUntilDocked());
        c.end(w);
        expectWithin(w.secondsUntilDocked(), 0.95, 1.45); // A tick may have seen the use just now.
        EXPECT_EQ(w.window.currentFrame, topRight);
        w.queue.advance(0.3);
        EXPECT_FALSE(w.window.visible);
        EXPECT_TRUE(w.tabWindow.visible);
    }
}

TEST(DockTest, APanelThatMayNotDockStays)
{
    struct Case
    {
        const char *what;
        std::function<void(World &)> change;
        bool docks;
    };
    const Case cases[] = {
        { "pointer a little farther off", [](World &w) { w.pointer.at = QPointF(729, 100); },
          true },
        { "pointer far beyond the side", [](World &w) { w.pointer.at = QPointF(1003, 100); },
          true },
        { "pointer unknown", [](World &w) { w.pointer.at.reset(); }, true },
        { "empty shelf", [](World &w) { w.items = 0; }, false },
        { "switched off", [](World &w) { w.panel.setDockEnabled(false); }, false },
        { "no screen", [](World &w) { w.screens.screens.clear(); }, false },
        { "hidden", [](World &w) { w.panel.hide(); }, false },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.summonAndWait();
        c.change(w);
        EXPECT_EQ(w.secondsUntilDocked().has_value(), c.docks);
        EXPECT_EQ(w.tabWindow.visible, c.docks);
    }
    World w; // As soon as there is something on the shelf, the next tick docks.
    w.items = 0;
    w.summonAndWait();
    w.queue.advance(10);
    w.items = 1;
    expectWithin(w.secondsUntilDocked(), 0, 0.25);
}

TEST(DockTest, ASummonAndAnActivationHoldThePanelAndTheLaterMomentCounts)
{
    World w;
    w.panel.summon();
    expectWithin(w.secondsUntilDocked(), 3.0, 3.25);
    w.queue.advance(1);
    w.tabWindow.onPressed();
    expectWithin(w.secondsUntilDocked(), 1.2, 1.45);

    World sooner;
    sooner.panel.summon();
    sooner.panel.dock();
    sooner.queue.advance(0.5);
    sooner.tabWindow.onPressed();
    expectWithin(sooner.secondsUntilDocked(), 2.5, 2.75);
}

TEST(DockTest, ThePanelGoesToTheNearestSideAtItsHeight)
{
    struct Case
    {
        const char *what;
        QRectF frame;
        DockEdge edge;
        QRectF home, tab;
    };
    using Edge = DockEdge;
    const Case cases[] = {
        { "right", topRight, Edge::Right, topRightHome, { 978, 174, 22, 60 } },
        { "left", { 100, 200, 240, 300 }, Edge::Left, { 10, 200, 240, 300 }, { 0, 320, 22, 60 } },
        { "in the middle",
          { 380, 200, 240, 300 },
          Edge::Right,
          { 750, 200, 240, 300 },
          { 978, 320, 22, 60 } },
        { "hanging out below",
          { 0, 700, 240, 300 },
          Edge::Left,
          { 10, 500, 240, 300 },
          { 0, 620, 22, 60 } },
        { "under the bar",
          { 0, 0, 240, 300 },
          Edge::Left,
          { 10, 30, 240, 300 },
          { 0, 150, 22, 60 } },
        { "inner side of the second screen",
          { 1050, 100, 240, 300 },
          Edge::Left,
          { 1010, 100, 240, 300 },
          { 1000, 220, 22, 60 } },
        { "across both, mostly on the second",
          { 900, 100, 240, 300 },
          Edge::Left,
          { 1010, 100, 240, 300 },
          { 1000, 220, 22, 60 } },
        { "higher than its screen",
          { 1500, 50, 240, 900 },
          Edge::Right,
          { 1550, 0, 240, 900 },
          { 1778, 420, 22, 60 } },
        { "so high that the tab would hang out",
          { 1500, 50, 240, 1300 },
          Edge::Right,
          { 1550, 0, 240, 1300 },
          { 1778, 532, 22, 60 } },
        { "on no screen",
          { 3000, 3000, 240, 300 },
          Edge::Right,
          { 750, 500, 240, 300 },
          { 978, 620, 22, 60 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.summonAndWait();
        w.window.currentFrame = c.frame;
        w.panel.dock();
        EXPECT_EQ(w.tab.model.edge.value(), c.edge);
        EXPECT_EQ(w.tabWindow.edge, c.edge);
        EXPECT_EQ(w.tabWindow.frame, c.tab);
        w.queue.advance(0.1);
        EXPECT_EQ(w.window.slide.x() > 0, c.edge == Edge::Right);
        w.queue.advance(0.2);
        EXPECT_EQ(w.window.currentFrame, c.home);
        EXPECT_FALSE(w.window.visible);
        EXPECT_EQ(w.window.slide, QPointF());
    }
    World low; // A screen of less than the tab with its margins: its head stays inside.
    low.summonAndWait();
    low.screens.screens = { { QRectF(0, 0, 1000, 70), QRectF(0, 0, 1000, 70) } };
    low.panel.dock();
    EXPECT_EQ(low.tabWindow.frame.top(), 8);
}

TEST(DockTest, TheTabBringsThePanelBack)
{
    struct Case
    {
        const char *what;
        std::function<void(World &)> activate;
        bool comes;
    };
    const auto hover = [](double seconds) {
        return [=](World &w) {
            w.tabWindow.onPointerEntered();
            w.queue.advance(seconds);
            w.tabWindow.onPointerLeft();
        };
    };
    const Case cases[] = {
        { "hover", hover(0.21), true },
        { "shorter hover", hover(0.19), false },
        { "press", [](World &w) { w.tabWindow.onPressed(); }, true },
        { "drag", [](World &w) { w.tabWindow.onDragEntered(); }, true },
        { "summon", [](World &w) { w.panel.summon(); }, true },
        { "switched off", [](World &w) { w.panel.setDockEnabled(false); }, true },
        { "switched on again", [](World &w) { w.panel.setDockEnabled(true); }, false },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.dockAndWait();
        const int checks = w.checks;
        w.queue.advance(5);
        EXPECT_EQ(w.checks, checks); // Nothing runs.
        int shows = 0;
        w.panel.onWillShow = [&] { ++shows; };
        c.activate(w);
        EXPECT_EQ(w.panel.isDocked(), !c.comes);
        EXPECT_EQ(w.panel.isVisible(), c.comes);
        EXPECT_EQ(shows, c.comes ? 1 : 0);
        EXPECT_EQ(w.window.slide.x(), c.comes ? 24 : 0);
        w.queue.advance(0.3);
        EXPECT_EQ(w.window.visible, c.comes);
        EXPECT_EQ(w.tabWindow.visible, !c.comes);
        EXPECT_EQ(w.window.currentFrame, topRightHome);
        EXPECT_EQ(w.window.opacity, 1);
        EXPECT_EQ(w.tabWindow.opacity, 1);
    }
}

TEST(DockTest, ASummonFromAnotherScreenBringsThePanelThere)
{
    World w;
    w.dockAndWait();
    w.pointer.at = QPointF(1400, 300);
    w.summonAndWait();
    EXPECT_EQ(w.window.currentFrame, QRectF(1536, 24, 240, 300));
    EXPECT_TRUE(w.panel.isVisible());
    EXPECT_FALSE(w.panel.isDocked());
    EXPECT_FALSE(w.tabWindow.visible);
}

TEST(DockTest, HidingADockedPanelTakesTheTabToo)
{
    for (const double after : { 0.1, 1.0 }) { // In the middle of its motion, and later.
        World w;
        w.summonAndWait();
        w.panel.dock();
        w.queue.advance(after);
        w.panel.hide();
        EXPECT_FALSE(w.panel.isDocked());
        EXPECT_FALSE(w.window.visible);
        EXPECT_EQ(w.window.opacity, 1);
        EXPECT_EQ(w.window.currentFrame, topRightHome);
        w.queue.advance(0.2);
        EXPECT_FALSE(w.tabWindow.visible);
        w.queue.advance(10);
        EXPECT_FALSE(w.panel.isDocked());
    }
}

TEST(DockTest, TurningBackInTheMiddleOfAMotionNeitherFlashesNorEndsTheOldOne)
{
    World w;
    w.summonAndWait();
    w.panel.dock();
    w.queue.advance(0.1);
    const double before = w.window.opacity;
    const double tabBefore = w.tabWindow.opacity;
    w.window.shownOpacities.clear();
    w.tabWindow.shownOpacities.clear();
    w.panel.summon();
    w.queue.advance(1);
    EXPECT_FALSE(w.window.calls.contains(QStringLiteral("orderOut")));
    EXPECT_EQ(w.window.currentFrame, topRightHome);
    EXPECT_EQ(w.window.slide, QPointF());
    EXPECT_GE(*std::ranges::min_element(w.window.shownOpacities), before);
    EXPECT_LE(*std::ranges::max_element(w.tabWindow.shownOpacities), tabBefore);

    w.panel.dock();
    w.queue.advance(1);
    w.tabWindow.onPressed();
    w.queue.advance(0.06);
    w.panel.dock(); // The tab is still fading out.
    w.queue.advance(1);
    EXPECT_TRUE(w.tabWindow.visible);
    EXPECT_EQ(w.tabWindow.opacity, 1);
    EXPECT_FALSE(w.window.visible);

    w.panel.summon();
    w.queue.advance(1);
    w.panel.hide(); // A summon during this fade out is watched like any other.
    w.queue.advance(0.1);
    w.panel.summon();
    expectWithin(w.secondsUntilDocked(), 3.0, 3.25);
}

TEST(DockTest, TheDockedPanelFollowsItsScreen)
{
    struct Case
    {
        const char *what;
        QList<Screen> screens;
        QRectF home, tab;
    };
    const Screen narrower { left.frame, QRectF(0, 30, 940, 250) };
    const Case cases[] = {
        { "a panel of the desktop came",
          { narrower, right },
          { 690, 30, 240, 300 },
          { 918, 150, 22, 60 } },
        { "its screen went", { right }, { 1550, 54, 240, 300 }, { 1778, 174, 22, 60 } },
        { "the other one went", { left }, topRightHome, { 978, 174, 22, 60 } },
        { "all went", {}, topRightHome, { 978, 174, 22, 60 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        for (const double after : { 0.1, 1.0 }) {
            World w;
            w.summonAndWait();
            w.panel.dock();
            w.queue.advance(after);
            w.screens.screens = c.screens;
            w.screens.onChanged();
            EXPECT_EQ(w.tabWindow.frame, c.tab);
            w.queue.advance(1);
            w.tabWindow.onPressed();
            EXPECT_EQ(w.window.currentFrame, c.home);
            w.screens.screens = { left, right };
            w.screens.onChanged(); // Undocked: the window is the desktop's to move.
            EXPECT_EQ(w.window.currentFrame, c.home);
        }
    }
}

TEST(DockTest, WithoutACompositorPanelAndTabComeAndGoAtOnce)
{
    World w;
    w.window.composited = false;
    w.tabWindow.composited = false;
    w.panel.summon();
    w.panel.dock();
    EXPECT_FALSE(w.window.visible);
    EXPECT_EQ(w.window.currentFrame, topRightHome);
    EXPECT_TRUE(w.tabWindow.visible);
    w.tabWindow.onPressed();
    EXPECT_TRUE(w.window.visible);
    EXPECT_EQ(w.window.slide, QPointF());
    EXPECT_FALSE(w.tabWindow.visible);
}
