#include "app/ApplicationWorld.h"

#include <gtest/gtest.h>

TEST(AppDelegateTest, APanelThatADragSummonedGoesIfNothingWasDropped)
{
    for (const bool dropped : { false, true }) {
        SCOPED_TRACE(dropped);
        Application app;
        app.beginFileDrag();
        EXPECT_TRUE(app.window.visible);
        if (dropped)
            app.drop("a note");
        app.endDrag();
        app.queue.advance(0.39);
        EXPECT_TRUE(app.window.visible);
        app.queue.advance(0.5);
        EXPECT_EQ(app.window.visible, dropped);
    }
}

TEST(AppDelegateTest, APanelThatWasUpBeforeTheDragStays)
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
}

TEST(AppDelegateTest, ASecondDragWithinTheGraceOfTheFirstDoesNotKeepThePanel)
{
    Application app;
    app.beginFileDrag();
    app.endDrag();
    app.queue.advance(0.2);
    app.beginFileDrag();
    app.queue.advance(0.5);
    EXPECT_FALSE(app.window.visible);
}

TEST(AppDelegateTest, KeysRemoveBringBackAndHide)
{
    Application app;
    app.drop("one");
    app.drop("two");
    app.delegate.activate();
    app.queue.advance(1);
    EXPECT_EQ(app.window.calls.last(), QStringLiteral("focus"));

    constexpr int escape = 53;
    constexpr int backspace = 51;
    EXPECT_FALSE(app.press(backspace)); // Nothing is selected.
    EXPECT_TRUE(app.press(-1, EventModifier::Command, "a"));
    EXPECT_TRUE(app.press(backspace));
    EXPECT_FALSE(app.press(-1, EventModifier::Command | EventModifier::Shift, "z"));
    EXPECT_TRUE(app.press(-1, EventModifier::Command, "z"));
    EXPECT_FALSE(app.press(-1, EventModifier::Command, "z")); // The stash is spent.
    EXPECT_TRUE(app.press(-1, EventModifier::Command, "a"));
    EXPECT_TRUE(app.press(escape)); // The selection first, then the panel.
    app.queue.advance(1);
    EXPECT_TRUE(app.isUp());
    EXPECT_TRUE(app.press(escape));
    app.queue.advance(1);
    EXPECT_FALSE(app.window.visible);
}

TEST(AppDelegateTest, WhatIsOlderThanTheSettingGoesWithTheNextCleanup)
{
    for (const char *age : { "off", "1h" }) {
        SCOPED_TRACE(age);
        Application app({ { QStringLiteral("autoCleanup"), QLatin1String(age) } });
        app.drop("soon old");
        const auto isSaved = [&] {
            QFile file(app.folder.path() + QStringLiteral("/Vantle/shelves.json"));
            return file.open(QIODevice::ReadOnly) && file.readAll().contains("soon old");
        };
        app.queue.advance(3599);
        EXPECT_TRUE(isSaved());
        app.queue.advance(61);
        EXPECT_EQ(isSaved(), QLatin1String(age) == QLatin1String("off"));
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

TEST(AppDelegateTest, ADragThatFoundThePanelDockedPutsItBackUnlessSomethingWasDropped)
{
    for (const bool dropped : { false, true }) {
        SCOPED_TRACE(dropped);
        Application app;
        app.drop("first");
        app.delegate.toggle();
        app.queue.advance(5);
        EXPECT_FALSE(app.window.visible);
        EXPECT_TRUE(app.tab.visible);
        app.beginFileDrag();
        EXPECT_TRUE(app.window.visible);
        if (dropped)
            app.drop("second");
        app.endDrag();
        app.queue.advance(0.8);
        EXPECT_EQ(app.window.visible, dropped);
        EXPECT_EQ(app.tab.visible, !dropped);
    }
}

TEST(AppDelegateTest, ATabDoesNotStayForAnEmptyShelf)
{
    Application app({ { QStringLiteral("autoCleanup"), QStringLiteral("1h") } });
    app.drop("soon old");
    app.delegate.toggle();
    app.queue.advance(5);
    EXPECT_TRUE(app.tab.visible);
    app.queue.advance(3700);
    EXPECT_FALSE(app.tab.visible);
    EXPECT_FALSE(app.window.visible);
    app.delegate.toggle();
    app.queue.advance(60);
    EXPECT_TRUE(app.isUp());
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
