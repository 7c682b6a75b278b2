#include "app/ApplicationWorld.h"

#include <gtest/gtest.h>

TEST(AppDelegateTest, APanelThatADragSummonedGoesBackUnlessSomethingWasDropped)
{
    enum Drop { None, Refused, Taken };
    for (const Drop dropped : { None, Refused, Taken }) {
        for (const bool docked : { false, true }) {
            SCOPED_TRACE(testing::Message() << "dropped " << dropped << ", docked " << docked);
            Application app;
            if (docked) {
                app.drop("first");
                app.delegate.toggle();
                app.queue.advance(5);
                EXPECT_FALSE(app.window.visible);
                EXPECT_TRUE(app.tab.visible);
            }
            app.beginFileDrag();
            EXPECT_TRUE(app.window.visible);
            if (dropped == Taken)
                app.drop("a note");
            else if (dropped == Refused)
                app.dropTarget.onDrop({});
            app.endDrag();
            app.queue.advance(0.39);
            EXPECT_TRUE(app.window.visible);
            app.queue.advance(0.5);
            EXPECT_EQ(app.window.visible, dropped != None);
            if (dropped == Refused)
                app.queue.advance(2); // Until it has been read.
            EXPECT_EQ(app.window.visible, dropped == Taken);
            EXPECT_EQ(app.tab.visible, docked && dropped != Taken);
        }
    }
}

TEST(AppDelegateTest, APanelThatWasUpBeforeTheDragStaysAndASecondDragWithinTheGraceKeepsNone)
{
    Application app;
    app.delegate.toggle();
    app.queue.advance(1);
    app.beginFileDrag();
    app.endDrag();
    app.queue.advance(2);
    EXPECT_TRUE(app.isUp());
    app.delegate.toggle();
    app.queue.advance(1);
    EXPECT_FALSE(app.window.visible);
    app.beginFileDrag();
    app.endDrag();
    app.queue.advance(0.2);
    app.beginFileDrag();
    app.queue.advance(0.5);
    EXPECT_FALSE(app.window.visible);
}

TEST(AppDelegateTest, WhatIsOlderThanTheSettingGoesAndTheTabOfAnEmptyShelfToo)
{
    for (const bool isKept : { true, false }) {
        SCOPED_TRACE(isKept);
        Application app(
            { { QStringLiteral("autoCleanup"), QLatin1String(isKept ? "off" : "1h") } });
        app.drop("soon old");
        app.delegate.toggle();
        app.queue.advance(3599);
        EXPECT_TRUE(app.tab.visible);
        app.queue.advance(65);
        EXPECT_EQ(app.tab.visible, isKept);
        EXPECT_FALSE(app.window.visible);
        app.delegate.toggle();
        app.queue.advance(1);
        EXPECT_TRUE(app.isUp());
    }
}

TEST(AppDelegateTest, FilesAreFollowedWhileThePanelIsUp)
{
    Application app({ { QStringLiteral("dockToEdge"), false } });
    app.drop("a note");
    app.queue.advance(100);
    EXPECT_EQ(app.bookmarks.checks, 0);
    for (int round = 1; round <= 2; ++round) {
        app.bookmarks.checks = 0;
        app.delegate.toggle();
        app.queue.settle();
        EXPECT_EQ(app.bookmarks.checks, 1);
        app.queue.advance(9.1);
        EXPECT_EQ(app.bookmarks.checks, 4);
        app.delegate.toggle();
        app.queue.advance(100);
        EXPECT_EQ(app.bookmarks.checks, 4);
    }
}

TEST(AppDelegateTest, TheHotKeyTogglesUnlessItIsSomebodyElses)
{
    constexpr int space = 49;
    constexpr int controlOption = HotKeyModifier::Control | HotKeyModifier::Option;
    const QJsonObject stored { { QStringLiteral("hotKeyCode"), space },
                               { QStringLiteral("hotKeyModifiers"), controlOption } };
    for (const bool taken : { false, true }) {
        SCOPED_TRACE(taken);
        Application app(stored,
                        taken ? QSet<FakeHotKey::Combination> { { space, controlOption } }
                              : QSet<FakeHotKey::Combination>());
        EXPECT_EQ(app.sounds.played.size(), taken ? 1 : 0);
        EXPECT_TRUE(app.status.entries.first().title.contains(QLatin1String("Super+Alt+Space")));
        app.hotKey.press(space, controlOption);
        app.queue.advance(1);
        EXPECT_EQ(app.isUp(), !taken);
        app.hotKey.press(space, controlOption);
        app.queue.advance(1);
        EXPECT_FALSE(app.isUp());
    }
}

TEST(AppDelegateTest, AnOpenTrayMenuKeepsThePanelForAMinuteAtMost)
{
    Application app;
    app.drop("a note");
    app.delegate.toggle();
    app.status.onMenuOpened();
    app.queue.advance(30);
    EXPECT_FALSE(app.tab.visible);
    app.status.onMenuClosed();
    app.queue.advance(2);
    EXPECT_TRUE(app.tab.visible);
    app.delegate.toggle();
    app.status.onMenuOpened();
    app.queue.advance(62);
    EXPECT_TRUE(app.tab.visible);
}
