#include "panel/HotKeyCenter.h"

#include "platform/fake/FakeHotKey.h"

#include <gtest/gtest.h>

namespace {

constexpr int keyS = 1;
constexpr int space = 49;
constexpr int commandOption = HotKeyModifier::Command | HotKeyModifier::Option;

}

TEST(HotKeyCenterTest, ARegistrationReplacesTheOneBeforeAlsoIfItFails)
{
    struct Case
    {
        const char *what;
        bool taken;
        int byOld, byNew; // Presses of either key that trigger.
    };
    for (const auto &c : { Case { "free", false, 0, 1 }, Case { "taken", true, 0, 0 } }) {
        SCOPED_TRACE(c.what);
        FakeHotKey desktop;
        if (c.taken)
            desktop.taken.insert({ space, commandOption });
        HotKeyCenter center(desktop);
        int triggers = 0;
        ASSERT_TRUE(center.registerHotKey(keyS, commandOption));
        desktop.press(keyS, commandOption); // Nobody listens yet.
        center.onTrigger = [&] { ++triggers; };
        desktop.press(keyS, commandOption);
        EXPECT_EQ(std::exchange(triggers, 0), 1);

        EXPECT_EQ(center.registerHotKey(space, commandOption), !c.taken);
        desktop.press(keyS, commandOption);
        EXPECT_EQ(std::exchange(triggers, 0), c.byOld);
        desktop.press(space, commandOption);
        EXPECT_EQ(std::exchange(triggers, 0), c.byNew);

        EXPECT_TRUE(center.registerHotKey(keyS, commandOption));
        EXPECT_EQ(desktop.bound.size(), 1);
    }
}

TEST(HotKeyCenterTest, EachModifierIsTranslatedByItself)
{
    for (unsigned set = 0; set < 16; ++set) {
        SCOPED_TRACE(set);
        const auto either
            = [set](unsigned bit, auto value) { return (set & bit) != 0 ? value : 0; };
        const Modifiers flags = either(1, Modifiers { 0x20000 }) | either(2, Modifiers { 0x40000 })
            | either(4, Modifiers { 0x80000 }) | either(8, Modifiers { 0x100000 });
        EXPECT_EQ(HotKeyCenter::carbonModifiers(flags | 0x10000), // And Caps Lock.
                  either(1, 512) | either(2, 4096) | either(4, 2048) | either(8, 256));
    }
}
