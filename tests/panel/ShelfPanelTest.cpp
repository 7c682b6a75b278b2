#include "panel/PanelWorld.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using World = PanelWorld;

TEST(ShelfPanelTest, APanelAppearsWhereTheModeSays)
{
    const struct
    {
        const char *what;
        const char *mode;
        std::optional<QPointF> pointer;
        QPointF origin;
        QRectF before {}; // Where it lay; none: where it was made.
    } cases[] = {
        { "top right", "topRight", QPointF(500, 400), { 736, 54 } },
        { "of the pointer's screen", "topRight", QPointF(1400, 300), { 1536, 24 } },
        { "the border belongs to the right screen", "topRight", QPointF(1000, 0), { 1536, 24 } },
        { "pointer on no screen", "topRight", QPointF(1400, 700), { 736, 54 } },
        { "pointer unknown", "topRight", {}, { 736, 54 } },
        { "unknown mode", "Cursor", QPointF(500, 400), { 736, 54 } },
        { "beside the pointer", "cursor", QPointF(500, 400), { 514, 414 } },
        { "bottom right corner", "cursor", QPointF(999, 799), { 752, 492 } },
        { "top left corner, under the bar", "cursor", QPointF(0, 0), { 14, 38 } },
        { "left border", "cursor", QPointF(-20, 300), { 8, 314 } },
        { "on the second screen", "cursor", QPointF(1790, 590), { 1552, 292 } },
        { "cursor unknown", "cursor", {}, { 736, 54 } },
        { "larger than the screen", "cursor", QPointF(1400, 300), { 892, 8 }, { 0, 0, 900, 700 } },
        { "where it was", "last", QPointF(1400, 300), { 100, 200 }, { 100, 200, 240, 300 } },
        { "hanging over an edge", "last", {}, { 900, 600 }, { 900, 600, 240, 300 } },
        { "hardly on a screen", "last", {}, { -230, 790 }, { -230, 790, 240, 300 } },
        { "with its head above", "last", {}, { 100, -200 }, { 100, -200, 240, 300 } },
        { "on a lost screen", "last", QPointF(1400, 300), { 1536, 24 }, { 2500, 100, 240, 300 } },
        { "touching a screen only", "last", QPointF(0, 0), { 736, 54 }, { 1800, 100, 240, 300 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.pointer.at = c.pointer;
        if (!c.before.isNull())
            w.window.currentFrame = c.before;
        const QSizeF size = w.window.currentFrame.size();
        w.panel->positionMode = QLatin1String(c.mode);
        w.panel->summon();
        EXPECT_EQ(w.window.currentFrame, QRectF(c.origin, size));
    }
    World w; // Without a screen it stays where it is.
    w.screens.screens.clear();
    for (const auto &mode : { u"topRight"_s, u"cursor"_s, u"last"_s }) {
        w.window.currentFrame = QRectF(10, 20, 240, 300);
        w.panel->positionMode = mode;
        w.panel->summon();
        EXPECT_EQ(w.window.currentFrame, QRectF(10, 20, 240, 300));
    }
}

TEST(ShelfPanelTest, ItFadesInAndOutAndTurnsBackInTheMiddleWithoutAFlash)
{
    World w;
    auto &seen = w.window.shownOpacities;
    w.panel->hide();
    w.queue.advance(1);
    EXPECT_TRUE(w.window.calls.isEmpty()) << "It was not up.";
    w.panel->onWillShow = [&] { w.window.calls.append(u"willShow"_s); };
    w.panel->summonWithFocus();
    EXPECT_EQ(w.window.calls, (QStringList { u"willShow"_s, u"orderFront"_s, u"focus"_s }));
    EXPECT_EQ(w.window.opacity, 0);
    EXPECT_EQ(w.window.slide, QPointF(0, -10));
    const QRectF frame = w.window.currentFrame;
    w.queue.advance(0.12);
    EXPECT_GT(w.window.opacity, 0.5); // Eased out: past the middle at half time.
    EXPECT_GT(w.window.slide.y(), -5);
    w.queue.advance(0.14);
    EXPECT_EQ(w.window.opacity, 1);
    EXPECT_EQ(w.window.slide, QPointF());
    EXPECT_EQ(w.window.currentFrame, frame) << "What moves is the contents.";
    EXPECT_TRUE(std::ranges::is_sorted(seen));
    EXPECT_GE(seen.size(), 14U);

    seen.clear();
    w.panel->positionMode = u"cursor"_s; // One that is up jumps.
    w.panel->summon();
    EXPECT_EQ(w.window.currentFrame, QRectF(514, 414, 240, 300));
    w.queue.advance(1);
    EXPECT_TRUE(seen.empty());
    EXPECT_EQ(w.window.calls.count(u"focus"_s), 1);

    w.window.onClose();
    EXPECT_FALSE(w.panel->isVisible());
    w.queue.advance(0.09);
    const double leaving = w.window.opacity;
    EXPECT_GT(leaving, 0.5); // Eased in: not yet at the middle.
    seen.clear();
    w.panel->summon();
    w.queue.advance(1);
    EXPECT_EQ(w.window.opacity, 1);
    EXPECT_GE(std::ranges::min(seen), leaving);
    EXPECT_FALSE(w.window.calls.contains(u"orderOut"_s));

    w.panel->hide();
    w.queue.advance(0.1);
    w.panel->hide(); // Does not begin again.
    w.queue.advance(0.1);
    EXPECT_FALSE(w.window.visible);
    EXPECT_EQ(w.window.opacity, 1);
    w.panel->summon();
    EXPECT_EQ(w.window.opacity, 0);
    w.queue.advance(0.05);
    const double coming = w.window.opacity;
    seen.clear();
    w.panel->hide();
    w.queue.advance(1);
    seen.pop_back(); // It is put back once nobody sees it.
    EXPECT_LE(std::ranges::max(seen), coming);
    EXPECT_FALSE(w.window.visible);
    EXPECT_EQ(w.window.calls.count(u"orderOut"_s), 2);
}

TEST(ShelfPanelTest, AKeyGoesToThePreviewOrTheKeyTable)
{
    enum Without { Nothing, Files, Preview, Takers };
    const Modifiers command = EventModifier::Command;
    const struct
    {
        const char *what;
        int keyCode;
        Modifiers modifiers;
        Without without;
        const char *order; // p: the preview was asked, k: the key table.
        bool result;
    } cases[] = {
        { "plain key", 125, 0, Nothing, "k", true },
        { "plain key nobody wants", 125, 0, Takers, "k", false },
        { "space with chosen files", 49, 0, Nothing, "p", true },
        { "space without", 49, 0, Files, "k", true },
        { "space where there is no preview", 49, 0, Preview, "pk", true },
        { "Command", 0, command, Takers, "k", false },
        { "Command space, taken", 49, command, Nothing, "k", true },
        { "Command space, refused", 49, command, Takers, "kp", true },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        std::string order;
        w.panel->onPreview = [&] {
            order += 'p';
            return c.without != Preview;
        };
        w.panel->onKey = [&](const KeyEvent &) {
            order += 'k';
            return c.without != Takers;
        };
        if (c.without != Files)
            w.ql.urls.append(QUrl(u"file:///a"_s));
        EXPECT_EQ(w.window.onKey({ c.keyCode, c.modifiers, {} }), c.result);
        EXPECT_EQ(order, c.order);
    }
}

TEST(ShelfPanelTest, EveryFrameIsStoredOnceItRests)
{
    World w;
    w.panel->positionMode = u"cursor"_s;
    w.summonAndWait();
    const World moved(w.preferences.object.value(u"ShelfPanelFrame"_s));
    EXPECT_EQ(moved.window.currentFrame, QRectF(514, 414, 240, 300));
    for (int i = 0; i < 5; ++i) {
        w.window.currentFrame.translate(-10, 10);
        w.window.onUserFrame();
        w.queue.advance(0.4);
    }
    EXPECT_EQ(w.preferences.writes, 1);
    w.queue.advance(0.2);
    EXPECT_EQ(w.preferences.writes, 2);
    const World restarted(w.preferences.object.value(u"ShelfPanelFrame"_s));
    EXPECT_EQ(restarted.window.currentFrame, QRectF(464, 464, 240, 300));
}

TEST(ShelfPanelTest, ItGrowsWithTheTextUnlessTheUserHasChosenASize)
{
    const std::pair<QJsonValue, QRectF> cases[] = {
        { QJsonValue::Undefined, { 496, 54, 480, 600 } },
        { QJsonArray { 500, 100, 300, 700 }, { 376, 100, 424, 700 } },
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
    const std::tuple<const char *, QJsonValue, QRectF> cases[] = {
        { "as it was", QJsonArray { 1100, 50, 300, 400 }, { 1100, 50, 300, 400 } },
        { "too small", QJsonArray { 100, 100, 50, 60 }, { 100, 100, 212, 242 } },
        { "larger than its screen", QJsonArray { 1010, 10, 4000, 5000 }, { 1010, 10, 800, 600 } },
        { "out of reach", QJsonArray { 990, 100, 300, 400 }, { 990, 100, 300, 400 } },
        { "with its head below", QJsonArray { 100, 790, 300, 400 }, { 100, 760, 300, 400 } },
        { "on a screen that has gone", QJsonArray { 5000, 100, 300, 2000 }, { 676, 54, 300, 770 } },
        { "empty", QJsonArray { 100, 100, 0, 300 }, fresh },
        { "no numbers", QJsonArray { u"x"_s, 1, 2, 3 }, fresh },
        { "too few", QJsonArray { 100, 100, 300 }, fresh },
        { "beyond all coordinates", QJsonArray { 1e300, 100, 300, 300 }, fresh },
    };
    for (const auto &[what, stored, frame] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(World(stored).window.currentFrame, frame);
    }
}
