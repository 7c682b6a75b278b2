#include "panel/HotKeyCenter.h"

#include "platform/fake/FakeHotKey.h"

#include <gtest/gtest.h>

TEST(HotKeyCenterTest, ARegistrationReplacesTheOneBeforeAlsoIfItFails)
{
    constexpr int keyS = 1;
    constexpr int space = 49;
    constexpr int modifiers = HotKeyModifier::Command | HotKeyModifier::Option;
    for (const bool taken : { false, true }) {
        SCOPED_TRACE(taken);
        FakeHotKey desktop;
        if (taken)
            desktop.taken.insert({ space, modifiers });
        HotKeyCenter center(desktop);
        std::string triggers;
        ASSERT_TRUE(center.registerHotKey(keyS, modifiers));
        desktop.press(keyS, modifiers); // Nobody listens yet.
        center.onTrigger = [&] { triggers += 't'; };
        desktop.press(keyS, modifiers);
        EXPECT_EQ(triggers, "t");
        EXPECT_EQ(center.registerHotKey(space, modifiers), !taken);
        desktop.press(keyS, modifiers);
        EXPECT_EQ(triggers, "t");
        desktop.press(space, modifiers);
        EXPECT_EQ(triggers, taken ? "t" : "tt");
        EXPECT_TRUE(center.registerHotKey(keyS, modifiers));
        EXPECT_EQ(desktop.bound.size(), 1);
    }
}

TEST(HotKeyCenterTest, EachModifierIsTranslatedByItself)
{
    EXPECT_EQ(HotKeyCenter::carbonModifiers(0x10000 | 0x20000 | 0x100000), 512 | 256);
    EXPECT_EQ(HotKeyCenter::carbonModifiers(0x40000 | 0x80000), 4096 | 2048);
}
