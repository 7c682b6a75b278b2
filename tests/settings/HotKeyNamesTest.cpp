#include "app/settings/HotKeyNames.h"

#include "platform/Modifiers.h"

#include <gtest/gtest.h>

TEST(HotKeyNamesTest, ALabelIsItsModifiersInOrderAndTheKey)
{
    using namespace HotKeyModifier;
    struct Case
    {
        const char *what;
        int code, modifiers;
        const char *characters, *label;
    };
    const Case cases[] = {
        { "letter", 1, Control | Option, "s", "⌃⌥S" },
        { "all modifiers, a named key", 49, Command | Shift | Option | Control, " ", "⌃⌥⇧⌘Space" },
        { "default key without characters", 1, Command, "", "⌘S" },
        { "unnamed key without characters", 115, Option, "", "⌥#115" },
        { "no modifier", 0, 0, "ä", "Ä" },
        { "bits of no modifier", 0, 0x400, "a", "A" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(
            HotKeyNames::label(c.code, c.modifiers, QString::fromUtf8(c.characters)).toStdString(),
            c.label);
    }
}
