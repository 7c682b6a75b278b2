#include "panel/SummonMonitor.h"

#include "platform/fake/FakeDragSelection.h"
#include "platform/fake/FakeFrontApplication.h"
#include "platform/fake/FakePointerMonitor.h"
#include "platform/fake/FakeScreens.h"
#include "platform/fake/VirtualQueue.h"

#include <gtest/gtest.h>

namespace {

const QPointF middle(500, 400);
const QPointF corner(999, 1); // Of the fake's one screen, 1000 by 800.

struct World
{
    World()
    {
        monitor.onDragStart = [this] { story += QLatin1Char('s'); };
        monitor.onDragEnd = [this] { story += QLatin1Char('e'); };
        monitor.start();
    }
    void announceFiles()
    {
        selection.announce();
        selection.answer(true);
    }
    void dragFiles(const QPointF &by)
    {
        pointer.press(middle);
        announceFiles();
        pointer.drag(middle + by);
    }

    VirtualQueue queue;
    FakePointerMonitor pointer;
    FakeDragSelection selection;
    FakeFrontApplication front { queue };
    FakeScreens screens;
    QString story; // Callbacks in order: s for a start, e for an end.
    SummonMonitor monitor { pointer, selection, front, screens, queue };
};

/// One word of a story: p presses in the middle, a announces a drag of files and answers,
/// n announces alone, y and t answer that it holds files or text, d and c drag to that many points
/// beside the middle or the corner, q presses there, m reports a move with those buttons, u a drag
/// to a place that is not told, r releases; f is "p a d"; "." waits; in front of a story stand
/// settings.
void play(World &w, const QString &word)
{
    const QChar verb = word.front();
    const QStringList numbers = word.mid(1).split(QLatin1Char(','));
    const QPointF by(numbers.value(0).toDouble(), numbers.value(1).toDouble());
    switch (verb.unicode()) {
    case 'p':
        return w.pointer.press(middle);
    case 'q':
        return w.pointer.press(corner + by);
    case 'a':
        return w.announceFiles();
    case 'n':
        return w.selection.announce();
    case 'y':
        return w.selection.answer(true);
    case 't':
        return w.selection.answer(false);
    case 'd':
        return w.pointer.drag(middle + by);
    case 'c':
        return w.pointer.drag(corner + by);
    case 'f':
        return w.dragFiles(by);
    case 'r':
        return w.pointer.release();
    case '.':
        return w.queue.settle();
    case 'm':
        w.pointer.buttons = numbers.value(0).toUInt();
        w.pointer.at = middle + QPointF(50, 0);
        return w.pointer.send(PointerEvent::Moved);
    case 'u':
        w.pointer.at.reset();
        return w.pointer.send(PointerEvent::LeftDragged);
    case '!': // Settings, and what the desktop is like.
        if (word == QLatin1String("!drag"))
            w.monitor.dragEnabled = false;
        else if (word == QLatin1String("!corner"))
            w.monitor.cornerEnabled = false;
        else if (word == QLatin1String("!screens"))
            w.screens.screens.clear();
        else if (word == QLatin1String("!option"))
            w.monitor.requiredModifier = EventModifier::Option;
        else if (word == QLatin1String("!ignored"))
            w.monitor.ignoredBundleIDs = { QStringLiteral("thunar"), QString() };
        else
            ADD_FAILURE() << word.toStdString();
        return;
    case '+':
        w.pointer.held = word == QLatin1String("+command")
            ? EventModifier::Command
            : EventModifier::Option | EventModifier::Shift;
        return;
    case '=':
        w.front.current = word.mid(1);
        return;
    default:
        ADD_FAILURE() << word.toStdString();
    }
}

TEST(SummonMonitorTest, TheGesturesTellTheBeginningAndTheEndOfADragOfFiles)
{
    struct Case
    {
        const char *what;
        const char *story;
        const char *calls; // s for a start, e for an end.
    };
    const Case cases[] = {
        { "3.9 points", "f3.9,0", "" },
        { "4 points", "f4,0", "s" },
        { "more than 4 points aslant", "f-3,3", "s" },
        { "further moves are the same drag", "f4,0 d90,0 c", "s" },
        { "files of an earlier drag", "p d100,0", "" },
        { "announced before the press", "a p d100,0", "" },
        { "text", "p n t d100,0", "" },
        { "the answer comes when the pointer rests already", "p n d100,0 y", "s" },
        { "the answer comes after the release", "p n d100,0 r y", "" },
        { "no press", "a d0,0", "" },
        { "moved without the left button", "f0,0 m2", "" },
        { "moved with it", "f0,0 m3", "s" },
        { "a desktop that does not tell the place", "f0,0 u", "" },
        { "switched off", "!drag f50,0", "" },

        { "release", "f4,0 r r", "se" },
        { "a release closes the press", "f0,0 r d50,0", "" },
        { "a press whose predecessor was never released", "f4,0 p d50,0", "se" },
        { "and its own drag", "f4,0 f4,0 r", "sese" },

        { "without the modifier", "!option +command f50,0", "" },
        { "pressed during the drag, another held besides", "!option f50,0 +both d51,0", "s" },
        { "the front application changes during the press", "!ignored =thunar f50,0 =firefox d90,0",
          "" },
        { "an ignored one comes to the front before the modifier is pressed",
          "!ignored !option =firefox f50,0 . =thunar +both d51,0 .", "" },
        { "the next press is free again", "!ignored =thunar f50,0 =firefox f50,0", "s" },
        { "no front application", "!ignored f50,0", "s" },

        { "in the corner at once, whatever is against the drag gesture",
          "!drag !option q-7,0 a c-3.9,0", "s" },
        { "in the corner, in an ignored press", "!ignored =thunar f50,0 c", "s" },
        { "both switched off", "!drag !corner f499,-399", "" },
        { "no screen there", "!drag !screens f499,-399", "" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        for (const QString &word : QString::fromLatin1(c.story).split(QLatin1Char(' ')))
            play(w, word);
        EXPECT_TRUE(w.story.isEmpty()) << "a callback came from within an event";
        w.queue.settle();
        EXPECT_EQ(w.story.toStdString(), c.calls);
    }
}

TEST(SummonMonitorTest, TheCornerIsSixPointsWideOnEveryScreen)
{
    const std::pair<QPointF, const char *> places[] = {
        { { 994, 1 }, "" },     { { 994.1, 1 }, "s" }, { { 999, 6 }, "" },
        { { 999, 5.9 }, "s" },  { { 999, -1 }, "" },   { { 1000, 1 }, "" }, // The second's left.
        { { 1999, 104 }, "s" }, { { 1999, 106 }, "" }, { { 1999, 99 }, "" },
    };
    for (const auto &[at, story] : places) {
        SCOPED_TRACE(testing::Message() << at.x() << ", " << at.y());
        World w;
        w.screens.screens.append({ QRectF(1000, 100, 1000, 800), {} });
        w.monitor.dragEnabled = false;
        w.dragFiles(at - middle);
        w.queue.settle();
        EXPECT_EQ(w.story.toStdString(), story);
    }
}

TEST(SummonMonitorTest, TheCornerGestureRestsForMoreThanASecond)
{
    for (const auto &[seconds, story] : { std::pair(1.0, "se"), std::pair(1.001, "ses") }) {
        World w;
        w.monitor.dragEnabled = false;
        w.dragFiles(corner - middle);
        w.pointer.release();
        w.queue.advance(seconds);
        w.dragFiles(corner - middle);
        w.queue.settle();
        EXPECT_EQ(w.story.toStdString(), story);
    }
}

TEST(SummonMonitorTest, TheFrontApplicationIsAskedForOnceAndLast)
{
    World w;
    w.monitor.ignoredBundleIDs = { QStringLiteral("thunar") };
    w.pointer.press(middle);
    w.pointer.drag(middle + QPointF(40, 0));
    EXPECT_EQ(w.front.reads, 0);
    w.announceFiles();
    w.pointer.drag(middle + QPointF(50, 0));
    EXPECT_EQ(w.front.reads, 1);
}

TEST(SummonMonitorTest, WhatComesAfterItsEndReachesNobody)
{
    World w;
    w.dragFiles({ 50, 0 });
    w.monitor.stop();
    EXPECT_FALSE(w.pointer.isWatched());
    w.selection.answer(true);
    w.queue.settle();
    EXPECT_EQ(w.story.toStdString(), "s");
    w.pointer.release();
    w.pointer.refuses = true; // Nor on a desktop that lets nobody watch.
    w.monitor.start();
    w.dragFiles({ 50, 0 });
    w.queue.settle();
    EXPECT_EQ(w.story.toStdString(), "s");

    World gone;
    gone.monitor.stop();
    auto monitor = std::make_unique<SummonMonitor>(gone.pointer, gone.selection, gone.front,
                                                   gone.screens, gone.queue);
    monitor->onDragStart = [] { FAIL(); };
    monitor->start();
    gone.dragFiles({ 50, 0 });
    monitor.reset();
    gone.selection.answer(true);
    gone.queue.settle();
}

}
