#include "platform/linux/windows/KeyCodes.h"

#include <linux/input-event-codes.h>

#include <gtest/gtest.h>

#include <set>

namespace {

using KeyCodes::ShiftKey;

/// A keyboard whose letter keys type one layout after the other, as the X server
/// lists them: two columns a layout.
KeyCodes::SymbolTable keyboard(const std::vector<const char32_t *> &layouts)
{
    KeyCodes::SymbolTable table { KEY_1, static_cast<int>(layouts.size()) * 2, {} };
    const size_t width = layouts.size() * 2;
    table.symbols.resize(width * (KEY_SLASH - KEY_1 + 1));
    static constexpr int letterKeys[]
        = { KEY_Q, KEY_W,         KEY_E, KEY_R, KEY_T, KEY_Y, KEY_U, KEY_I, KEY_O,
            KEY_P, KEY_A,         KEY_S, KEY_D, KEY_F, KEY_G, KEY_H, KEY_J, KEY_K,
            KEY_L, KEY_SEMICOLON, KEY_Z, KEY_X, KEY_C, KEY_V, KEY_B, KEY_N, KEY_M };
    for (size_t layout = 0; layout < layouts.size(); ++layout) {
        for (size_t i = 0; i < std::size(letterKeys); ++i) {
            const char32_t character = layouts[layout][i];
            const auto place = static_cast<size_t>(letterKeys[i] - KEY_1) * width + layout * 2;
            const bool latin = character < 0x80;
            table.symbols[place] = latin ? character : character | 0x01000000;
            table.symbols[place + 1] = latin ? character - 0x20 : character | 0x01000000;
        }
        table.symbols[layout * 2] = layouts[layout] == layouts.front() ? '&' : '1';
        table.symbols[layout * 2 + 1] = '!';
    }
    return table;
}

const char32_t *const american = U"qwertyuiopasdfghjkl;zxcvbnm";
const char32_t *const french = U"azertyuiopqsdfghjklmwxcvbn,";
const char32_t *const russian = U"йцукенгшщзфывапролджячсмить";

}

TEST(KeyCodesTest, EveryVirtualCodeIsOneKeyAndBack)
{
    std::set<int> seen;
    for (int code = 0; code <= 127; ++code) {
        const int evdev = KeyCodes::toEvdev(code);
        if (evdev == KeyCodes::none)
            continue;
        EXPECT_EQ(KeyCodes::fromEvdev(evdev), code);
        EXPECT_TRUE(seen.insert(evdev).second) << code;
    }
    EXPECT_GT(seen.size(), 100U);
    EXPECT_EQ(KeyCodes::fromEvdev(KEY_SYSRQ), KeyCodes::none);
    for (const int code : { 36, 48, 49, 51, 53, 115, 117, 122, 111, 126 })
        EXPECT_EQ(KeyCodes::fromSymbol(KeyCodes::toSymbol(code)), code);
    EXPECT_EQ(KeyCodes::toSymbol(1), 0U); // A letter is where it is printed.
    EXPECT_EQ(KeyCodes::fromSymbol('s'), KeyCodes::none);
}

TEST(KeyCodesTest, ACharacterIsWhatTheFirstLatinLayoutTypes)
{
    const struct
    {
        std::vector<const char32_t *> layouts;
        const char *keyQ; // What the key right of Tab types.
        const char *semicolonKey;
    } cases[] = {
        { { american }, "q", ";" },        { { french }, "a", "m" },
        { { russian, french }, "a", "m" }, { { french, american }, "a", "m" },
        { { russian }, "q", ";" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(&c - cases);
        const auto table = keyboard(c.layouts);
        const auto typed = [&](int key, ShiftKey shift) {
            return KeyCodes::characters(key, shift, table).toStdString();
        };
        for (const ShiftKey shift : { ShiftKey::Up, ShiftKey::Down }) {
            EXPECT_EQ(typed(KEY_Q, shift), c.keyQ);
            EXPECT_EQ(typed(KEY_1, shift), shift == ShiftKey::Up ? "1" : "!");
            EXPECT_EQ(typed(KEY_KP1, shift) + typed(KEY_KPDOT, shift), "1.");
            EXPECT_EQ(typed(KEY_F1, shift) + typed(KEY_LEFT, shift) + typed(KEY_SYSRQ, shift), "");
        }
        EXPECT_EQ(typed(KEY_SEMICOLON, ShiftKey::Up), c.semicolonKey);
    }
}

TEST(KeyCodesTest, LettersAndAccentsWithOldSymbolsAreCharactersToo)
{
    auto table = keyboard({ french });
    const auto place = static_cast<size_t>(KEY_LEFTBRACE - KEY_1) * 2;
    for (const auto &[symbol, text] : { std::pair(0xfe52U, "^"), std::pair(0x1f5U, "ő"),
                                        std::pair(0xe4U, "ä"), std::pair(0xff0dU, "") }) {
        table.symbols[place] = symbol;
        EXPECT_EQ(KeyCodes::characters(KEY_LEFTBRACE, ShiftKey::Up, table).toStdString(), text);
    }
}
