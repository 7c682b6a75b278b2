#include "panel/PanelWorld.h"

#include <algorithm>

namespace {

const QRectF topRight(736, 54, 240, 300); // Where a summoned panel stands on the left screen.
const QRectF topRightHome(750, 54, 240, 300);

/// A panel that may dock, with the pointer away from it.
struct DockWorld : PanelWorld
{
    DockWorld()
    {
        pointer.at = QPointF(100, 700);
        panel->attachDock(tab);
        panel->setDockEnabled(true);
        panel->canDock = [this] { return items > 0; };
        panel->hasModal = [this] {
            ++checks;
            return modal;
        };
        panel->isPreviewVisible = [this] { return preview; };
    }
    void dockAndWait()
    {
        summonAndWait();
        panel->dock();
        queue.advance(1);
    }
    /// Seconds until it docks by itself; none if it does not within that many.
    std::optional<double> secondsUntilDocked(double most = 10)
    {
        const double start = queue.uptime();
        while (!panel->isDocked() && queue.uptime() < start + most)
            queue.advance(0.01);
        return panel->isDocked() ? std::optional(queue.uptime() - start) : std::nullopt;
    }

    FakeTabWindow tabWindow;
    DockTab tab { tabWindow, queue };
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
    using Change = std::function<void(DockWorld &)>;
    const auto at = [](double x, double y) -> Change {
        return [=](DockWorld &w) { w.pointer.at = QPointF(x, y); };
    };
    const auto buttons
        = [](unsigned held) -> Change { return [=](DockWorld &w) { w.pointer.buttons = held; }; };
    const Change away = at(100, 700);
    const struct
    {
        const char *what;
        Change use, end; // Without an end the use does not hold it.
    } cases[] = {
        { "pointer on it", at(800, 100), away },
        { "pointer at its margin", at(730, 360), away },
        { "pointer a little farther off", at(729, 100), {} },
        { "pointer at the screen's side beside it", at(999, 100), away },
        { "pointer just beyond that side", at(1002, 100), away },
        { "pointer far beyond the side", at(1003, 100), {} },
        { "pointer unknown", [](auto &w) { w.pointer.at.reset(); }, {} },
        { "left button", buttons(1), buttons(0) },
        { "another button", buttons(4), buttons(0) },
        { "menu", [](auto &w) { w.panel->menuOpened(); }, [](auto &w) { w.panel->menuClosed(); } },
        { "dialog", [](auto &w) { w.modal = true; }, [](auto &w) { w.modal = false; } },
        { "preview", [](auto &w) { w.preview = true; }, [](auto &w) { w.preview = false; } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        DockWorld w;
        w.summonAndWait();
        c.use(w);
        EXPECT_EQ(w.secondsUntilDocked().has_value(), !c.end);
        if (!c.end)
            continue;
        c.end(w);
        expectWithin(w.secondsUntilDocked(), 0.95, 1.45); // A tick may have seen the use just now.
        EXPECT_EQ(w.window.currentFrame, topRight);
        w.queue.advance(0.3);
        EXPECT_FALSE(w.window.visible);
        EXPECT_TRUE(w.tabWindow.visible);
    }
    for (const Change &never : { Change([](auto &w) { w.items = 0; }),
                                 Change([](auto &w) { w.panel->setDockEnabled(false); }),
                                 Change([](auto &w) { w.screens.screens.clear(); }),
                                 Change([](auto &w) { w.panel->hide(); }) }) {
        DockWorld w;
        w.summonAndWait();
        never(w);
        EXPECT_FALSE(w.secondsUntilDocked());
        EXPECT_FALSE(w.tabWindow.visible);
    }
}

TEST(DockTest, ASummonAndAnActivationHoldThePanelAndTheLaterMomentCounts)
{
    DockWorld w;
    w.panel->summon();
    expectWithin(w.secondsUntilDocked(), 3.0, 3.25);
    w.queue.advance(1);
    w.tabWindow.onPressed();
    expectWithin(w.secondsUntilDocked(), 1.2, 1.45);

    DockWorld sooner;
    sooner.panel->summon();
    sooner.panel->dock();
    sooner.queue.advance(0.5);
    sooner.tabWindow.onPressed();
    expectWithin(sooner.secondsUntilDocked(), 2.5, 2.75);
}

TEST(DockTest, ThePanelGoesToTheNearestSideAtItsHeight)
{
    using enum DockEdge;
    const struct
    {
        const char *what;
        QRectF frame;
        DockEdge edge;
        QPointF home, tab;
    } cases[] = {
        { "right", topRight, Right, { 750, 54 }, { 978, 174 } },
        { "left", { 100, 200, 240, 300 }, Left, { 10, 200 }, { 0, 320 } },
        { "in the middle", { 380, 200, 240, 300 }, Right, { 750, 200 }, { 978, 320 } },
        { "hanging out below", { 0, 700, 240, 300 }, Left, { 10, 500 }, { 0, 620 } },
        { "under the bar", { 0, 0, 240, 300 }, Left, { 10, 30 }, { 0, 150 } },
        { "inner side", { 1050, 100, 240, 300 }, Left, { 1010, 100 }, { 1000, 220 } },
        { "across both", { 900, 100, 240, 300 }, Left, { 1010, 100 }, { 1000, 220 } },
        { "higher than its screen", { 1500, 50, 240, 900 }, Right, { 1550, 0 }, { 1778, 420 } },
        { "tab hanging out", { 1500, 50, 240, 1300 }, Right, { 1550, 0 }, { 1778, 532 } },
        { "on no screen", { 3000, 3000, 240, 300 }, Right, { 750, 500 }, { 978, 620 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        DockWorld w;
        w.summonAndWait();
        w.window.currentFrame = c.frame;
        w.panel->dock();
        EXPECT_EQ(w.tabWindow.edge, c.edge);
        EXPECT_EQ(w.tabWindow.frame, QRectF(c.tab, QSizeF(22, 60)));
        w.queue.advance(0.1);
        EXPECT_EQ(w.window.slide.x() > 0, c.edge == Right);
        w.queue.advance(0.2);
        EXPECT_EQ(w.window.currentFrame, QRectF(c.home, c.frame.size()));
        EXPECT_FALSE(w.window.visible);
        EXPECT_EQ(w.window.slide, QPointF());
        w.queue.advance(0.5);
        EXPECT_EQ(w.preferences.object[QStringLiteral("ShelfPanelFrame")][0].toDouble(),
                  c.home.x());
    }
    DockWorld low; // A screen of less than the tab with its margins: its head stays inside.
    low.summonAndWait();
    low.screens.screens = { { QRectF(0, 0, 1000, 70), QRectF(0, 0, 1000, 70) } };
    low.panel->dock();
    EXPECT_EQ(low.tabWindow.frame.top(), 8);
}

TEST(DockTest, TheTabBringsThePanelBack)
{
    const auto hover = [](double seconds) {
        return [=](DockWorld &w) {
            w.tabWindow.onPointerEntered();
            w.queue.advance(seconds);
            w.tabWindow.onPointerLeft();
        };
    };
    const std::tuple<const char *, std::function<void(DockWorld &)>, bool> cases[] = {
        { "hover", hover(0.21), true },
        { "shorter hover", hover(0.19), false },
        { "press", [](auto &w) { w.tabWindow.onPressed(); }, true },
        { "drag", [](auto &w) { w.tabWindow.onDragEntered(); }, true },
        { "summon", [](auto &w) { w.panel->summon(); }, true },
        { "switched off", [](auto &w) { w.panel->setDockEnabled(false); }, true },
        { "switched on again", [](auto &w) { w.panel->setDockEnabled(true); }, false },
    };
    for (const auto &[what, activate, comes] : cases) {
        SCOPED_TRACE(what);
        DockWorld w;
        w.dockAndWait();
        const int checks = w.checks;
        w.queue.advance(5);
        EXPECT_EQ(w.checks, checks); // Nothing runs.
        int shows = 0;
        w.panel->onWillShow = [&] { ++shows; };
        activate(w);
        EXPECT_EQ(w.panel->isDocked(), !comes);
        EXPECT_EQ(w.panel->isVisible(), comes);
        EXPECT_EQ(shows, comes ? 1 : 0);
        EXPECT_EQ(w.window.slide.x(), comes ? 24 : 0);
        w.queue.advance(0.3);
        EXPECT_EQ(w.window.visible, comes);
        EXPECT_EQ(w.tabWindow.visible, !comes);
        EXPECT_EQ(w.window.currentFrame, topRightHome);
        EXPECT_EQ(w.window.opacity, 1);
        EXPECT_EQ(w.tabWindow.opacity, 1);
    }
}

TEST(DockTest, ASummonFromAnotherScreenBringsThePanelThere)
{
    DockWorld w;
    w.dockAndWait();
    w.pointer.at = QPointF(1400, 300);
    w.summonAndWait();
    EXPECT_EQ(w.window.currentFrame, QRectF(1536, 24, 240, 300));
    EXPECT_TRUE(w.panel->isVisible());
    EXPECT_FALSE(w.panel->isDocked());
    EXPECT_FALSE(w.tabWindow.visible);
}

TEST(DockTest, HidingADockedPanelTakesTheTabToo)
{
    for (const double after : { 0.1, 1.0 }) { // In the middle of its motion, and later.
        DockWorld w;
        w.summonAndWait();
        w.panel->dock();
        w.queue.advance(after);
        w.panel->hide();
        EXPECT_FALSE(w.panel->isDocked());
        EXPECT_FALSE(w.window.visible);
        EXPECT_EQ(w.window.opacity, 1);
        EXPECT_EQ(w.window.currentFrame, topRightHome);
        w.queue.advance(0.2);
        EXPECT_FALSE(w.tabWindow.visible);
        w.queue.advance(10);
        EXPECT_FALSE(w.panel->isDocked());
    }
}

TEST(DockTest, TurningBackInTheMiddleOfAMotionNeitherFlashesNorEndsTheOldOne)
{
    DockWorld w;
    w.summonAndWait();
    w.panel->dock();
    w.queue.advance(0.1);
    const double before = w.window.opacity;
    const double tabBefore = w.tabWindow.opacity;
    w.window.shownOpacities.clear();
    w.tabWindow.shownOpacities.clear();
    w.panel->summon();
    w.queue.advance(1);
    EXPECT_FALSE(w.window.calls.contains(QStringLiteral("orderOut")));
    EXPECT_EQ(w.window.currentFrame, topRightHome);
    EXPECT_EQ(w.window.slide, QPointF());
    EXPECT_GE(*std::ranges::min_element(w.window.shownOpacities), before);
    EXPECT_LE(*std::ranges::max_element(w.tabWindow.shownOpacities), tabBefore);

    w.panel->dock();
    w.queue.advance(1);
    w.tabWindow.onPressed();
    w.queue.advance(0.06);
    w.panel->dock(); // The tab is still fading out.
    w.queue.advance(1);
    EXPECT_TRUE(w.tabWindow.visible);
    EXPECT_EQ(w.tabWindow.opacity, 1);
    EXPECT_FALSE(w.window.visible);

    w.panel->summon();
    w.queue.advance(1);
    w.panel->hide(); // A summon during this fade out is watched like any other.
    w.queue.advance(0.1);
    w.panel->summon();
    expectWithin(w.secondsUntilDocked(), 3.0, 3.25);
}

TEST(DockTest, TheDockedPanelFollowsItsScreenUnlessAllWent)
{
    using List = QList<Screen>;
    for (const auto &[screens, home] : { std::pair(List { rightScreen }, QPointF(1550, 54)),
                                         { List {}, topRightHome.topLeft() } }) {
        DockWorld w;
        w.summonAndWait();
        w.panel->dock();
        w.queue.advance(0.1); // In the middle of its motion.
        w.screens.screens = screens;
        w.screens.onChanged();
        w.queue.advance(1);
        w.tabWindow.onPressed();
        EXPECT_EQ(w.window.currentFrame.topLeft(), home);
        w.screens.screens = { leftScreen };
        w.screens.onChanged(); // Undocked: the window is the desktop's to move.
        EXPECT_EQ(w.window.currentFrame.topLeft(), home);
    }
}

TEST(DockTest, WithoutACompositorOrAWishForMotionPanelAndTabComeAndGoAtOnce)
{
    for (const bool composited : { false, true }) {
        DockWorld w;
        w.window.composited = composited;
        w.tabWindow.composited = composited;
        w.panel->setMotion(composited ? Motion::Reduced : Motion::Full);
        w.tab.setMotion(composited ? Motion::Reduced : Motion::Full);
        w.panel->summon();
        EXPECT_TRUE(w.window.visible);
        EXPECT_EQ(w.window.opacity, 1);
        w.panel->dock();
        EXPECT_FALSE(w.window.visible);
        EXPECT_EQ(w.window.currentFrame, topRightHome);
        EXPECT_TRUE(w.tabWindow.visible);
        w.tabWindow.onPressed();
        EXPECT_TRUE(w.window.visible);
        EXPECT_EQ(w.window.slide, QPointF());
        EXPECT_FALSE(w.tabWindow.visible);
        w.panel->hide();
        EXPECT_FALSE(w.window.visible);
    }
}
