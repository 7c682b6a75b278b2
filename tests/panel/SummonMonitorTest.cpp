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
    FakeFrontApplication front;
    FakeScreens screens;
    QString story; // Callbacks in order: s for a start, e for an end.
    SummonMonitor monitor { pointer, selection, front, screens, queue };
};

struct Case
{
    const char *what;
    void (*play)(World &);
    const char *story;
};

void run(const std::vector<Case> &cases)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        c.play(w);
        EXPECT_TRUE(w.story.isEmpty()) << "a callback came from within an event";
        w.queue.settle();
        EXPECT_EQ(w.story.toStdString(), c.story);
    }
}

TEST(SummonMonitorTest, TheDragGestureNeedsFourPointsAndFreshFiles)
{
    run({
        { "3.9 points",
          [](World &w) {
              w.dragFiles({ 3.9, 0 });
          },
          "" },
        { "4 points",
          [](World &w) {
              w.dragFiles({ 4, 0 });
          },
          "s" },
        { "more than 4 points aslant",
          [](World &w) {
              w.dragFiles({ -3, 3 });
          },
          "s" },
        { "less than 4 points aslant",
          [](World &w) {
              w.dragFiles({ -2, 3 });
          },
          "" },
        { "further moves are the same drag",
          [](World &w) {
              w.dragFiles({ 4, 0 });
              w.pointer.drag(middle + QPointF(90, 0));
              w.pointer.drag(corner);
          },
          "s" },
        { "files of an earlier drag",
          [](World &w) {
              w.pointer.press(middle);
              w.pointer.drag(middle + QPointF(100, 0));
          },
          "" },
        { "announced before the press",
          [](World &w) {
              w.announceFiles();
              w.pointer.press(middle);
              w.pointer.drag(middle + QPointF(100, 0));
          },
          "" },
        { "text",
          [](World &w) {
              w.pointer.press(middle);
              w.selection.announce();
              w.selection.answer(false);
              w.pointer.drag(middle + QPointF(100, 0));
          },
          "" },
        { "the answer comes when the pointer rests already",
          [](World &w) {
              w.pointer.press(middle);
              w.selection.announce();
              w.pointer.drag(middle + QPointF(100, 0));
              w.selection.answer(true);
          },
          "s" },
        { "the answer comes after the release",
          [](World &w) {
              w.pointer.press(middle);
              w.selection.announce();
              w.pointer.drag(middle + QPointF(100, 0));
              w.pointer.release();
              w.selection.answer(true);
          },
          "" },
        { "no press",
          [](World &w) {
              w.announceFiles();
              w.pointer.drag(middle);
          },
          "" },
        { "moved without a button",
          [](World &w) {
              w.dragFiles({ 0, 0 });
              w.pointer.buttons = 2;
              w.pointer.at = middle + QPointF(50, 0);
              w.pointer.send(PointerEvent::Moved);
          },
          "" },
        { "moved with the left button",
          [](World &w) {
              w.dragFiles({ 0, 0 });
              w.pointer.buttons = 3;
              w.pointer.at = middle + QPointF(50, 0);
              w.pointer.send(PointerEvent::Moved);
          },
          "s" },
        { "a desktop that does not tell the place",
          [](World &w) {
              w.dragFiles({ 0, 0 });
              w.pointer.at.reset();
              w.pointer.send(PointerEvent::LeftDragged);
          },
          "" },
        { "switched off",
          [](World &w) {
              w.monitor.dragEnabled = false;
              w.dragFiles({ 50, 0 });
          },
          "" },
    });
}

TEST(SummonMonitorTest, EveryRecognisedDragEndsOnce)
{
    run({
        { "release",
          [](World &w) {
              w.dragFiles({ 4, 0 });
              w.pointer.release();
              w.pointer.release();
          },
          "se" },
        { "release of a press that was no drag",
          [](World &w) {
              w.dragFiles({ 3, 0 });
              w.pointer.release();
          },
          "" },
        { "release without a press", [](World &w) { w.pointer.release(); }, "" },
        { "and closes the press",
          [](World &w) {
              w.dragFiles({ 0, 0 });
              w.pointer.release();
              w.pointer.drag(middle + QPointF(50, 0));
          },
          "" },
        { "a press whose predecessor was never released",
          [](World &w) {
              w.dragFiles({ 4, 0 });
              w.pointer.press(middle);
              w.pointer.drag(middle + QPointF(50, 0)); // Nothing fresh since this press.
          },
          "se" },
        { "and its own drag",
          [](World &w) {
              w.dragFiles({ 4, 0 });
              w.dragFiles({ 4, 0 });
              w.pointer.release();
          },
          "sese" },
    });
}

TEST(SummonMonitorTest, TheModifierMayComeLateButAnIgnoredApplicationStaysIgnored)
{
    run({
        { "without the modifier",
          [](World &w) {
              w.monitor.requiredModifier = EventModifier::Option;
              w.pointer.held = EventModifier::Command;
              w.dragFiles({ 50, 0 });
          },
          "" },
        { "pressed during the drag, another one held besides",
          [](World &w) {
              w.monitor.requiredModifier = EventModifier::Option;
              w.dragFiles({ 50, 0 });
              w.pointer.held = EventModifier::Option | EventModifier::Shift;
              w.pointer.drag(middle + QPointF(51, 0));
          },
          "s" },
        { "the front application changes during the press",
          [](World &w) {
              w.monitor.ignoredBundleIDs = { QStringLiteral("thunar") };
              w.front.current = QStringLiteral("thunar");
              w.dragFiles({ 50, 0 });
              w.front.current = QStringLiteral("firefox");
              w.pointer.drag(middle + QPointF(90, 0));
          },
          "" },
        { "the next press is free again",
          [](World &w) {
              w.monitor.ignoredBundleIDs = { QStringLiteral("thunar") };
              w.front.current = QStringLiteral("thunar");
              w.dragFiles({ 50, 0 });
              w.front.current = QStringLiteral("firefox");
              w.dragFiles({ 50, 0 });
          },
          "s" },
        { "no front application",
          [](World &w) {
              w.monitor.ignoredBundleIDs = { QStringLiteral("thunar"), QString() };
              w.dragFiles({ 50, 0 });
          },
          "s" },
    });
}

TEST(SummonMonitorTest, TheCornerGestureAsksForNothingButTheCorner)
{
    run({
        { "at once, with everything against the drag gesture",
          [](World &w) {
              w.monitor.dragEnabled = false;
              w.monitor.requiredModifier = EventModifier::Option;
              w.pointer.press(corner - QPointF(7, 0));
              w.announceFiles();
              w.pointer.drag(corner - QPointF(3.9, 0));
          },
          "s" },
        { "in an ignored press",
          [](World &w) {
              w.monitor.ignoredBundleIDs = { QStringLiteral("thunar") };
              w.front.current = QStringLiteral("thunar");
              w.dragFiles({ 50, 0 });
              w.pointer.drag(corner);
          },
          "s" },
        { "switched off",
          [](World &w) {
              w.monitor.dragEnabled = w.monitor.cornerEnabled = false;
              w.dragFiles(corner - middle);
          },
          "" },
        { "without files, then the drag gesture is tried too",
          [](World &w) {
              w.pointer.press(middle);
              w.pointer.drag(corner);
          },
          "" },
        { "no screen there",
          [](World &w) {
              w.monitor.dragEnabled = false;
              w.screens.screens.clear();
              w.dragFiles(corner - middle);
          },
          "" },
    });
}

TEST(SummonMonitorTest, TheCornerIsSixPointsWideOnEveryScreen)
{
    struct Place
    {
        QPointF at;
        const char *story;
    };
    const Place places[]
        = {
              { { 994, 1 }, "" },     { { 994.1, 1 }, "s" }, { { 999, 6 }, "" },
              { { 999, 5.9 }, "s" },  { { 999, 0 }, "s" },   { { 999, -1 }, "" },
              { { 1000, 1 }, "" }, // The second screen's left edge.
              { { 1999, 104 }, "s" }, { { 1999, 106 }, "" }, { { 1999, 99 }, "" },
          };
    for (const auto &place : places) {
        SCOPED_TRACE(testing::Message() << place.at.x() << ", " << place.at.y());
        World w;
        w.screens.screens.append({ QRectF(1000, 100, 1000, 800), {} });
        w.monitor.dragEnabled = false;
        w.dragFiles(place.at - middle);
        w.queue.settle();
        EXPECT_EQ(w.story.toStdString(), place.story);
    }
}

TEST(SummonMonitorTest, TheCornerGestureRestsForMoreThanASecond)
{
    struct Pause
    {
        double seconds;
        const char *story;
    };
    for (const Pause &pause : { Pause { 0.5, "se" }, { 1.0, "se" }, { 1.001, "ses" } }) {
        SCOPED_TRACE(pause.seconds);
        World w;
        w.monitor.dragEnabled = false;
        w.dragFiles(corner - middle);
        w.pointer.release();
        w.queue.advance(pause.seconds);
        w.dragFiles(corner - middle);
        w.queue.settle();
        EXPECT_EQ(w.story.toStdString(), pause.story);
    }
}

TEST(SummonMonitorTest, WhatCostsMuchIsAskedLast)
{
    World w;
    w.monitor.ignoredBundleIDs = { QStringLiteral("thunar") };
    w.pointer.press(middle);
    w.selection.reads = 0;
    w.pointer.drag(middle + QPointF(3, 0));
    EXPECT_EQ(w.selection.reads, 0);
    w.pointer.drag(middle + QPointF(40, 0));
    EXPECT_GT(w.selection.reads, 0);
    EXPECT_EQ(w.front.reads, 0);
    w.announceFiles();
    EXPECT_EQ(w.front.reads, 1);
}

TEST(SummonMonitorTest, StopsAndRefusesAndGoesQuietly)
{
    {
        World w;
        w.monitor.start();
        EXPECT_TRUE(w.pointer.isWatched());
        w.dragFiles({ 50, 0 });
        w.monitor.stop();
        EXPECT_FALSE(w.pointer.isWatched());
        w.selection.answer(true);
        w.queue.settle();
        EXPECT_EQ(w.story.toStdString(), "s");
    }
    {
        World w;
        w.monitor.stop();
        w.pointer.refuses = true;
        w.monitor.start();
        w.dragFiles({ 50, 0 });
        w.queue.settle();
        EXPECT_TRUE(w.story.isEmpty());
    }
    World w;
    int calls = 0;
    auto monitor
        = std::make_unique<SummonMonitor>(w.pointer, w.selection, w.front, w.screens, w.queue);
    monitor->onDragStart = [&calls] { ++calls; };
    monitor->start();
    w.dragFiles({ 50, 0 });
    monitor.reset();
    w.selection.answer(true);
    w.queue.settle();
    EXPECT_EQ(calls, 0);
}

}
