#include "app/settings/HotKeyNames.h"

#include "app/settings/Localizer.h"
#include "app/settings/ShortcutText.h"

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

TEST(ShortcutTextTest, AStoredLabelIsSpelledAsTheDesktopDoes)
{
    struct Case
    {
        const char *label, *text;
    };
    const Case cases[] = { { "⌥⌘S", "Ctrl+Alt+S" },
                           { "⌃⌥⇧⌘Space", "Super+Ctrl+Alt+Shift+Space" },
                           { "⌘↩", "Ctrl+Return" },
                           { "⌃←", "Super+Left" },
                           { "⌥#115", "Alt+Home" },
                           { "⌥#240", "Alt+#240" },
                           { "⇧⌘+", "Ctrl+Shift++" },
                           { "F5", "F5" },
                           { "⌘", "⌘" },
                           { "", "" } };
    Localizer texts(QStringLiteral(VANTLE_SOURCE_DIR "/src/resources/Vantle_Vantle.bundle"), {});
    for (const auto &c : cases)
        EXPECT_EQ(shortcutText(QString::fromUtf8(c.label), texts).toStdString(), c.text);
    texts.setOverride(QStringLiteral("de"));
    EXPECT_EQ(shortcutText(QStringLiteral("⇧⌘#117"), texts), QStringLiteral("Strg+Umschalt+Entf"));
}
