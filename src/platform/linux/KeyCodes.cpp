#include "platform/linux/KeyCodes.h"

#include <linux/input-event-codes.h>

#include <QHash>

#include <array>
#include <string_view>

namespace {

struct Key
{
    int evdev;
    int keyCode;
    std::string_view us; // Unshifted and shifted characters on a US keyboard; a keypad's one.
};

constexpr std::array keys {
    Key { KEY_A, 0, "aA" },           Key { KEY_S, 1, "sS" },
    Key { KEY_D, 2, "dD" },           Key { KEY_F, 3, "fF" },
    Key { KEY_H, 4, "hH" },           Key { KEY_G, 5, "gG" },
    Key { KEY_Z, 6, "zZ" },           Key { KEY_X, 7, "xX" },
    Key { KEY_C, 8, "cC" },           Key { KEY_V, 9, "vV" },
    Key { KEY_102ND, 10, "<>" },      Key { KEY_B, 11, "bB" },
    Key { KEY_Q, 12, "qQ" },          Key { KEY_W, 13, "wW" },
    Key { KEY_E, 14, "eE" },          Key { KEY_R, 15, "rR" },
    Key { KEY_Y, 16, "yY" },          Key { KEY_T, 17, "tT" },
    Key { KEY_1, 18, "1!" },          Key { KEY_2, 19, "2@" },
    Key { KEY_3, 20, "3#" },          Key { KEY_4, 21, "4$" },
    Key { KEY_6, 22, "6^" },          Key { KEY_5, 23, "5%" },
    Key { KEY_EQUAL, 24, "=+" },      Key { KEY_9, 25, "9(" },
    Key { KEY_7, 26, "7&" },          Key { KEY_MINUS, 27, "-_" },
    Key { KEY_8, 28, "8*" },          Key { KEY_0, 29, "0)" },
    Key { KEY_RIGHTBRACE, 30, "]}" }, Key { KEY_O, 31, "oO" },
    Key { KEY_U, 32, "uU" },          Key { KEY_LEFTBRACE, 33, "[{" },
    Key { KEY_I, 34, "iI" },          Key { KEY_P, 35, "pP" },
    Key { KEY_ENTER, 36, "" },        Key { KEY_L, 37, "lL" },
    Key { KEY_J, 38, "jJ" },          Key { KEY_APOSTROPHE, 39, "'\"" },
    Key { KEY_K, 40, "kK" },          Key { KEY_SEMICOLON, 41, ";:" },
    Key { KEY_BACKSLASH, 42, "\\|" }, Key { KEY_COMMA, 43, ",<" },
    Key { KEY_SLASH, 44, "/?" },      Key { KEY_N, 45, "nN" },
    Key { KEY_M, 46, "mM" },          Key { KEY_DOT, 47, ".>" },
    Key { KEY_TAB, 48, "" },          Key { KEY_SPACE, 49, "  " },
    Key { KEY_GRAVE, 50, "`~" },      Key { KEY_BACKSPACE, 51, "" },
    Key { KEY_ESC, 53, "" },          Key { KEY_RIGHTCTRL, 54, "" },
    Key { KEY_LEFTCTRL, 55, "" },     Key { KEY_LEFTSHIFT, 56, "" },
    Key { KEY_CAPSLOCK, 57, "" },     Key { KEY_LEFTALT, 58, "" },
    Key { KEY_LEFTMETA, 59, "" },     Key { KEY_RIGHTSHIFT, 60, "" },
    Key { KEY_RIGHTALT, 61, "" },     Key { KEY_RIGHTMETA, 62, "" },
    Key { KEY_F17, 64, "" },          Key { KEY_KPDOT, 65, "." },
    Key { KEY_KPASTERISK, 67, "*" },  Key { KEY_KPPLUS, 69, "+" },
    Key { KEY_NUMLOCK, 71, "" },      Key { KEY_VOLUMEUP, 72, "" },
    Key { KEY_VOLUMEDOWN, 73, "" },   Key { KEY_MUTE, 74, "" },
    Key { KEY_KPSLASH, 75, "/" },     Key { KEY_KPENTER, 76, "" },
    Key { KEY_KPMINUS, 78, "-" },     Key { KEY_F18, 79, "" },
    Key { KEY_F19, 80, "" },          Key { KEY_KPEQUAL, 81, "=" },
    Key { KEY_KP0, 82, "0" },         Key { KEY_KP1, 83, "1" },
    Key { KEY_KP2, 84, "2" },         Key { KEY_KP3, 85, "3" },
    Key { KEY_KP4, 86, "4" },         Key { KEY_KP5, 87, "5" },
    Key { KEY_KP6, 88, "6" },         Key { KEY_KP7, 89, "7" },
    Key { KEY_F20, 90, "" },          Key { KEY_KP8, 91, "8" },
    Key { KEY_KP9, 92, "9" },         Key { KEY_YEN, 93, "" },
    Key { KEY_RO, 94, "" },           Key { KEY_KPCOMMA, 95, "," },
    Key { KEY_F5, 96, "" },           Key { KEY_F6, 97, "" },
    Key { KEY_F7, 98, "" },           Key { KEY_F3, 99, "" },
    Key { KEY_F8, 100, "" },          Key { KEY_F9, 101, "" },
    Key { KEY_HANJA, 102, "" },       Key { KEY_F11, 103, "" },
    Key { KEY_HANGEUL, 104, "" },     Key { KEY_F13, 105, "" },
    Key { KEY_F16, 106, "" },         Key { KEY_F14, 107, "" },
    Key { KEY_F10, 109, "" },         Key { KEY_COMPOSE, 110, "" },
    Key { KEY_F12, 111, "" },         Key { KEY_F15, 113, "" },
    Key { KEY_INSERT, 114, "" },      Key { KEY_HOME, 115, "" },
    Key { KEY_PAGEUP, 116, "" },      Key { KEY_DELETE, 117, "" },
    Key { KEY_F4, 118, "" },          Key { KEY_END, 119, "" },
    Key { KEY_F2, 120, "" },          Key { KEY_PAGEDOWN, 121, "" },
    Key { KEY_F1, 122, "" },          Key { KEY_LEFT, 123, "" },
    Key { KEY_RIGHT, 124, "" },       Key { KEY_DOWN, 125, "" },
    Key { KEY_UP, 126, "" },
};

struct NamedKey
{
    uint32_t symbol;
    int keyCode;
};

// A key code's first symbol is the one that it is bound by.
constexpr std::array namedKeys {
    NamedKey { 0xff0d, 36 },  NamedKey { 0xff09, 48 },  NamedKey { 0xfe20, 48 },
    NamedKey { 0x0020, 49 },  NamedKey { 0xff08, 51 },  NamedKey { 0xff1b, 53 },
    NamedKey { 0xff8d, 76 },  NamedKey { 0xff50, 115 }, NamedKey { 0xff55, 116 },
    NamedKey { 0xffff, 117 }, NamedKey { 0xff57, 119 }, NamedKey { 0xff56, 121 },
    NamedKey { 0xff51, 123 }, NamedKey { 0xff53, 124 }, NamedKey { 0xff54, 125 },
    NamedKey { 0xff52, 126 }, NamedKey { 0xffbe, 122 }, NamedKey { 0xffbf, 120 },
    NamedKey { 0xffc0, 99 },  NamedKey { 0xffc1, 118 }, NamedKey { 0xffc2, 96 },
    NamedKey { 0xffc3, 97 },  NamedKey { 0xffc4, 98 },  NamedKey { 0xffc5, 100 },
    NamedKey { 0xffc6, 101 }, NamedKey { 0xffc7, 109 }, NamedKey { 0xffc8, 103 },
    NamedKey { 0xffc9, 111 },
};

const Key *find(int Key::*member, int value)
{
    for (const Key &key : keys) {
        if (key.*member == value)
            return &key;
    }
    return nullptr;
}

bool isDigitRow(int evdevCode)
{
    return evdevCode >= KEY_1 && evdevCode <= KEY_0;
}

/// The column in which the keyboard types all of a to z. Columns stand in the
/// order of the layouts, so the first such one is the first Latin layout's; how
/// many columns each layout takes need not be known.
int latinColumn(const KeyCodes::SymbolTable &table)
{
    for (int column = 0; column < table.width; ++column) {
        uint32_t seen = 0;
        for (auto i = static_cast<size_t>(column); i < table.symbols.size();
             i += static_cast<size_t>(table.width)) {
            const uint32_t symbol = table.symbols[i];
            if (symbol >= 'a' && symbol <= 'z')
                seen |= 1U << (symbol - 'a');
        }
        if (seen == (1U << 26) - 1)
            return column;
    }
    return KeyCodes::none;
}

/// Key symbols with numbers older than Unicode: letters that Latin layouts of
/// Europe type without Shift, and accents that wait for a letter, which stand for
/// themselves.
const QHash<uint32_t, char16_t> &oldSymbols()
{
    static const QHash<uint32_t, char16_t> symbols {
        { 0x1b3, u'ł' },  { 0x1b9, u'š' },  { 0x1be, u'ž' },  { 0x1e3, u'ă' },  { 0x1e6, u'ć' },
        { 0x1e8, u'č' },  { 0x1ec, u'ě' },  { 0x1f0, u'đ' },  { 0x1f2, u'ň' },  { 0x1f5, u'ő' },
        { 0x1f8, u'ř' },  { 0x1f9, u'ů' },  { 0x1fb, u'ű' },  { 0x2b9, u'ı' },  { 0x2ba, u'ş' },
        { 0x2bb, u'ğ' },  { 0xfe50, u'`' }, { 0xfe51, u'´' }, { 0xfe52, u'^' }, { 0xfe53, u'~' },
        { 0xfe57, u'¨' }, { 0xfe5b, u'¸' },
    };
    return symbols;
}

/// The character of an X key symbol; none for keys that type nothing.
QString textOf(uint32_t symbol)
{
    if ((symbol >= 0x20 && symbol <= 0x7e) || (symbol >= 0xa0 && symbol <= 0xff))
        return QChar(static_cast<char16_t>(symbol));
    if ((symbol & 0xff000000) == 0x01000000) {
        const char32_t character = symbol & 0xffffff;
        return QString::fromUcs4(&character, 1);
    }
    if (const char16_t old = oldSymbols().value(symbol))
        return QChar(old);
    return {};
}

}

namespace KeyCodes {

int fromEvdev(int evdevCode)
{
    const Key *key = find(&Key::evdev, evdevCode);
    return key ? key->keyCode : none;
}

int toEvdev(int keyCode)
{
    const Key *key = find(&Key::keyCode, keyCode);
    return key ? key->evdev : none;
}

int fromSymbol(uint32_t symbol)
{
    for (const NamedKey &key : namedKeys) {
        if (key.symbol == symbol)
            return key.keyCode;
    }
    return none;
}

uint32_t toSymbol(int keyCode)
{
    for (const NamedKey &key : namedKeys) {
        if (key.keyCode == keyCode)
            return key.symbol;
    }
    return 0;
}

QString characters(int evdevCode, ShiftKey shift, const SymbolTable &table)
{
    const size_t level = shift == ShiftKey::Down ? 1 : 0;
    const Key *key = find(&Key::evdev, evdevCode);
    const std::string_view us = key ? key->us : std::string_view();
    // A keypad types the same on every layout, and with NumLock's help only.
    if (us.size() == 1 || (isDigitRow(evdevCode) && level == 0))
        return QChar(QLatin1Char(us.front()));
    const int column = latinColumn(table);
    const int row = evdevCode - table.firstEvdevCode;
    if (column == none)
        return us.size() > level ? QString(QLatin1Char(us[level])).toLower() : QString();
    const size_t place = static_cast<size_t>(row * table.width + column) + level;
    if (row < 0 || place >= table.symbols.size())
        return {};
    return textOf(table.symbols[place]).toLower();
}

}
