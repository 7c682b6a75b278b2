#include "panel/ShelfPanel.h"

#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakePanelWindow.h"
#include "platform/fake/FakePointerMonitor.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeScreens.h"
#include "platform/fake/VirtualQueue.h"
#include "store/QuickLookController.h"

#include <QJsonArray>

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

// How GoogleTest prints them.
static void PrintTo(const QRectF &rect, std::ostream *out)
{
    *out << rect.x() << "," << rect.y() << " " << rect.width() << "x" << rect.height();
}

namespace {

const QString frameKey = QStringLiteral("ShelfPanelFrame");
const QString topRight = QStringLiteral("topRight");
const QString cursor = QStringLiteral("cursor");
const QString last = QStringLiteral("last");

/// Two screens side by side: the left, main one with a bar of 30 points at the top.
struct World
{
    explicit World(const QJsonValue &stored = QJsonValue::Undefined)
    {
        screens.screens = { { QRectF(0, 0, 1000, 800), QRectF(0, 30, 1000, 770) },
                            { QRectF(1000, 0, 800, 600), QRectF(1000, 0, 800, 600) } };
        pointer.at = QPointF(500, 400);
        if (!stored.isUndefined())
            preferences.object.insert(frameKey, stored);
        panel.emplace(window, screens, pointer, preferences, session, icons, queue, ql);
    }

    void summonAndWait()
    {
        panel->summon();
        queue.advance(1);
    }

    VirtualQueue queue;
    FakePanelWindow window;
    FakeScreens screens;
    FakePointerMonitor pointer;
    FakePreferences preferences;
    FakeDragSession session;
    FakeIcons icons;
    QuickLookController ql;
    std::optional<ShelfPanel> panel;
};

}

TEST(ShelfPanelTest, APanelAppearsWhereTheModeSays)
{
    struct Case
    {
        const char *what;
        QString mode;
        std::optional<QPointF> pointer;
        QRectF before; // Where it lay; none: where it was made.
        QPointF origin;
    };
    const Case cases[] = {
        { "top right", topRight, QPointF(500, 400), {}, { 736, 54 } },
        { "top right of the pointer's screen", topRight, QPointF(1400, 300), {}, { 1536, 24 } },
        { "the border belongs to the right screen", topRight, QPointF(1000, 0), {}, { 1536, 24 } },
        { "pointer on no screen", topRight, QPointF(1400, 700), {}, { 736, 54 } },
        { "pointer unknown", topRight, std::nullopt, {}, { 736, 54 } },
        { "unknown mode", QStringLiteral("Cursor"), QPointF(500, 400), {}, { 736, 54 } },
        { "beside the pointer", cursor, QPointF(500, 400), {}, { 514, 414 } },
        { "bottom right corner", cursor, QPointF(999, 799), {}, { 752, 492 } },
        { "top left corner, under the bar", cursor, QPointF(0, 0), {}, { 14, 38 } },
        { "left border", cursor, QPointF(-20, 300), {}, { 8, 314 } },
        { "on the second screen", cursor, QPointF(1790, 590), {}, { 1552, 292 } },
        { "cursor unknown", cursor, std::nullopt, {}, { 736, 54 } },
        { "last", last, QPointF(1400, 300), { 100, 200, 240, 300 }, { 100, 200 } },
        { "last, hanging over an edge", last, {}, { 900, 600, 240, 300 }, { 900, 600 } },
        { "last, hardly on a screen", last, {}, { -230, 790, 240, 300 }, { -200, 760 } },
        { "last, with its head above", last, {}, { 100, -200, 240, 300 }, { 100, 30 } },
        { "last, on a screen that has gone",
          last,
          QPointF(1400, 300),
          { 2500, 100, 240, 300 },
          { 1536, 24 } },
        { "last, touching a screen only",
          last,
          QPointF(0, 0),
          { 1800, 100, 240, 300 },
          { 736, 54 } },
        { "larger than the screen", cursor, QPointF(1400, 300), { 0, 0, 900, 700 }, { 892, 8 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.pointer.at = c.pointer;
        if (!c.before.isNull())
            w.window.currentFrame = c.before;
        const QSizeF size = w.window.currentFrame.size();
        w.panel->positionMode = c.mode;
        w.panel->summon();
        EXPECT_EQ(w.window.currentFrame, QRectF(c.origin, size));
    }
}

TEST(ShelfPanelTest, WithoutAScreenThePanelStaysWhereItIs)
{
    World w;
    w.screens.screens.clear();
    for (const auto &mode : { topRight, cursor, last }) {
        w.window.currentFrame = QRectF(10, 20, 240, 300);
        w.panel->positionMode = mode;
        w.panel->summon();
        EXPECT_EQ(w.window.currentFrame, QRectF(10, 20, 240, 300));
    }
}

TEST(ShelfPanelTest, ASummonedPanelFadesInWhileItSlidesDownToItsPlace)
{
    World w;
    w.panel->onWillShow = [&] { w.window.calls.append(QStringLiteral("willShow")); };
    w.panel->summon();
    EXPECT_EQ(w.window.calls,
              (QStringList { QStringLiteral("willShow"), QStringLiteral("orderFront") }));
    EXPECT_EQ(w.window.opacity, 0);
    EXPECT_EQ(w.window.slide, QPointF(0, -10));
    const QRectF frame = w.window.currentFrame;

    w.queue.advance(0.12);
    EXPECT_GT(w.window.opacity, 0.5); // Eased out: past the middle at half time.
    EXPECT_LT(w.window.opacity, 1);
    EXPECT_GT(w.window.slide.y(), -5);
    w.queue.advance(0.14);
    EXPECT_EQ(w.window.opacity, 1);
    EXPECT_EQ(w.window.slide, QPointF());
    EXPECT_EQ(w.window.currentFrame, frame); // What moves is the contents.
    EXPECT_TRUE(std::is_sorted(w.window.shownOpacities.begin(), w.window.shownOpacities.end()));
    const auto steps = w.window.shownOpacities.size();
    EXPECT_GE(steps, 14U);
    w.queue.advance(5);
    EXPECT_EQ(w.window.shownOpacities.size(), steps); // Nothing runs on.
}

TEST(ShelfPanelTest, APanelThatIsUpJumpsToItsPlace)
{
    World w;
    w.summonAndWait();
    w.window.calls.clear();
    w.window.shownOpacities.clear();
    w.panel->positionMode = cursor;
    w.panel->summon();
    EXPECT_EQ(w.window.currentFrame, QRectF(514, 414, 240, 300));
    EXPECT_EQ(w.window.calls, QStringList { QStringLiteral("orderFront") });
    w.queue.advance(1);
    EXPECT_TRUE(w.window.shownOpacities.empty());
}

TEST(ShelfPanelTest, AHiddenPanelFadesOutAndThenLeaves)
{
    World w;
    w.panel->hide();
    w.queue.advance(1);
    EXPECT_TRUE(w.window.calls.isEmpty()); // It was not up.

    w.summonAndWait();
    w.panel->hide();
    EXPECT_FALSE(w.panel->isVisible());
    w.queue.advance(0.09);
    EXPECT_TRUE(w.window.visible);
    EXPECT_GT(w.window.opacity, 0.5); // Eased in: not yet at the middle.
    w.panel->hide(); // Does not begin again.
    w.queue.advance(0.11);
    EXPECT_FALSE(w.window.visible);
    EXPECT_EQ(w.window.opacity, 1);
    EXPECT_EQ(w.window.calls.count(QStringLiteral("orderOut")), 1);
}

TEST(ShelfPanelTest, ASummonDuringTheFadeOutBringsItBackWithoutAFlash)
{
    World w;
    w.summonAndWait();
    w.panel->hide();
    w.queue.advance(0.1);
    const double before = w.window.opacity;
    w.window.shownOpacities.clear();
    w.panel->summon();
    EXPECT_TRUE(w.panel->isVisible());
    w.queue.advance(1);
    EXPECT_TRUE(w.window.visible);
    EXPECT_EQ(w.window.opacity, 1);
    EXPECT_FALSE(w.window.calls.contains(QStringLiteral("orderOut")));
    EXPECT_TRUE(std::all_of(w.window.shownOpacities.begin(), w.window.shownOpacities.end(),
                            [before](double opacity) { return opacity >= before; }));
}

TEST(ShelfPanelTest, AHideDuringTheFadeInGoesOnFromThere)
{
    World w;
    w.panel->summon();
    w.queue.advance(0.05);
    const double before = w.window.opacity;
    w.window.shownOpacities.clear();
    w.panel->hide();
    w.queue.advance(0.17);
    EXPECT_TRUE(std::all_of(w.window.shownOpacities.begin(), w.window.shownOpacities.end(),
                            [before](double opacity) { return opacity <= before; }));
    w.queue.advance(1);
    EXPECT_FALSE(w.window.visible);
    w.panel->summon();
    EXPECT_EQ(w.window.opacity, 0);
    EXPECT_EQ(w.window.slide, QPointF(0, -10));
}

TEST(ShelfPanelTest, WithoutACompositorOrAWishForMotionItComesAndGoesAtOnce)
{
    for (const bool composited : { false, true }) {
        World w;
        w.window.composited = composited;
        w.panel->setMotion(composited ? Motion::Reduced : Motion::Full);
        w.panel->summon();
        EXPECT_TRUE(w.window.visible);
        EXPECT_EQ(w.window.opacity, 1);
        EXPECT_EQ(w.window.slide, QPointF());
        w.panel->hide();
        EXPECT_FALSE(w.window.visible);
    }
}

TEST(ShelfPanelTest, OnlyASummonWithFocusTakesTheKeyboardAndOnlyOnceItIsUp)
{
    World w;
    w.panel->summonWithFocus();
    EXPECT_EQ(w.window.calls,
              (QStringList { QStringLiteral("orderFront"), QStringLiteral("focus") }));
    w.panel->summonWithFocus();
    EXPECT_EQ(w.window.calls.count(QStringLiteral("focus")), 2);
    w.window.onClose();
    EXPECT_FALSE(w.panel->isVisible());
}

TEST(ShelfPanelTest, AKeyGoesToThePreviewOrTheKeyTable)
{
    struct Case
    {
        const char *what;
        int keyCode;
        Modifiers modifiers;
        bool chosenFiles, canPreview, consumed;
        const char *order; // p: the preview was asked, k: the key table.
        bool result;
    };
    const Case cases[] = {
        { "plain key", 125, 0, true, true, true, "k", true },
        { "plain key nobody wants", 125, 0, true, true, false, "k", false },
        { "space with chosen files", 49, 0, true, true, true, "p", true },
        { "space without", 49, 0, false, true, false, "k", false },
        { "space where there is no preview", 49, 0, true, false, true, "pk", true },
        { "Command", 0, EventModifier::Command, true, true, false, "k", false },
        { "Command space, taken", 49, EventModifier::Command, true, true, true, "k", true },
        { "Command space, refused", 49, EventModifier::Command, true, true, false, "kp", true },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        std::string order;
        w.panel->onPreview = [&] {
            order += 'p';
            return c.canPreview;
        };
        w.panel->onKey = [&](const KeyEvent &) {
            order += 'k';
            return c.consumed;
        };
        if (c.chosenFiles)
            w.ql.urls.append(QUrl(QStringLiteral("file:///a")));
        EXPECT_EQ(w.window.onKey({ c.keyCode, c.modifiers, {} }), c.result);
        EXPECT_EQ(order, c.order);
    }
}

TEST(ShelfPanelTest, APressThatMovesOnARowBecomesADrag)
{
    World w;
    int presses = 0;
    w.panel->beginPress = [&] { ++presses; };
    EXPECT_FALSE(w.window.onButton(WindowButtonEvent::LeftDown, { 50, 50 }));
    EXPECT_FALSE(w.window.onButton(WindowButtonEvent::LeftDragged, { 60, 50 })); // No row.
    const QList<QUrl> urls { QUrl(QStringLiteral("file:///a")) };
    w.panel->dragURLs = [&] { return urls; };
    QList<QUrl> out;
    w.panel->onDraggedOut = [&](const QList<QUrl> &taken) { out = taken; };
    w.window.onButton(WindowButtonEvent::LeftDown, { 50, 50 });
    EXPECT_TRUE(w.window.onButton(WindowButtonEvent::LeftDragged, { 60, 50 }));
    EXPECT_EQ(presses, 2);
    ASSERT_EQ(w.session.begun.size(), 1U);
    w.session.begun.front().onEnd(true);
    EXPECT_EQ(out, urls);
}

TEST(ShelfPanelTest, TheUsersFrameIsStoredOnceItRests)
{
    World w;
    w.summonAndWait();
    w.panel->hide();
    w.summonAndWait();
    EXPECT_EQ(w.preferences.writes, 0); // Neither a place nor an animation of its own.
    for (int i = 0; i < 5; ++i) {
        w.window.currentFrame.translate(-10, 10);
        w.window.onUserFrame();
        w.queue.advance(0.4);
    }
    EXPECT_EQ(w.preferences.writes, 0);
    w.queue.advance(0.2);
    EXPECT_EQ(w.preferences.writes, 1);

    World restarted(w.preferences.object.value(frameKey));
    EXPECT_EQ(restarted.window.currentFrame, QRectF(686, 104, 240, 300));
    restarted.panel->positionMode = last;
    restarted.panel->summon();
    EXPECT_EQ(restarted.window.currentFrame, QRectF(686, 104, 240, 300));
}

TEST(ShelfPanelTest, ItGrowsWithTheTextUnlessTheUserHasChosenASize)
{
    const std::pair<QJsonValue, QRectF> cases[] = {
        { QJsonValue::Undefined, { 496, 54, 480, 600 } },
        { QJsonArray { 500, 100, 300, 700 }, { 380, 100, 420, 700 } },
    };
    for (const auto &[stored, grown] : cases) {
        World w(stored);
        const QRectF before = w.window.currentFrame;
        w.panel->setTextScale(1);
        EXPECT_EQ(w.window.currentFrame, before);
        w.panel->setTextScale(2);
        EXPECT_EQ(w.window.currentFrame, grown);
    }
}

TEST(ShelfPanelTest, AStoredFrameIsRestoredWhereItCanBeUsed)
{
    const QRectF fresh(736, 54, 240, 300);
    struct Case
    {
        const char *what;
        QJsonValue stored;
        QRectF frame;
    };
    const Case cases[] = {
        { "as it was", QJsonArray { 1100, 50, 300, 400 }, { 1100, 50, 300, 400 } },
        { "too small", QJsonArray { 100, 100, 50, 60 }, { 100, 100, 210, 240 } },
        { "larger than its screen", QJsonArray { 1010, 10, 4000, 5000 }, { 1010, 10, 800, 600 } },
        { "out of reach", QJsonArray { 990, 100, 300, 400 }, { 990, 100, 300, 400 } },
        { "with its head below", QJsonArray { 100, 790, 300, 400 }, { 100, 760, 300, 400 } },
        { "on a screen that has gone", QJsonArray { 5000, 100, 300, 2000 }, { 676, 54, 300, 770 } },
        { "empty", QJsonArray { 100, 100, 0, 300 }, fresh },
        { "no numbers", QJsonArray { QStringLiteral("x"), 1, 2, 3 }, fresh },
        { "too few", QJsonArray { 100, 100, 300 }, fresh },
        { "no list", QStringLiteral("100 100 300 300"), fresh },
        { "beyond all coordinates", QJsonArray { 1e300, 100, 300, 300 }, fresh },
        { "null", QJsonValue(QJsonValue::Null), fresh },
        { "none", QJsonValue(QJsonValue::Undefined), fresh },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const World w(c.stored);
        EXPECT_EQ(w.window.currentFrame, c.frame);
    }
}
