#include "platform/linux/windows/KeyCodes.h"

#include <linux/input-event-codes.h>

#include <QHash>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

/// By their virtual codes, from 0 on; 0 where there is no such key.
constexpr int evdevCodes[] = {
    // What the main part types.
    KEY_A, KEY_S, KEY_D, KEY_F, KEY_H, KEY_G, KEY_Z, KEY_X, KEY_C, KEY_V, KEY_102ND, KEY_B, KEY_Q,
    KEY_W, KEY_E, KEY_R, KEY_Y, KEY_T, KEY_1, KEY_2, KEY_3, KEY_4, KEY_6, KEY_5, KEY_EQUAL, KEY_9,
    KEY_7, KEY_MINUS, KEY_8, KEY_0, KEY_RIGHTBRACE, KEY_O, KEY_U, KEY_LEFTBRACE, KEY_I, KEY_P,
    KEY_ENTER, KEY_L, KEY_J, KEY_APOSTROPHE, KEY_K, KEY_SEMICOLON, KEY_BACKSLASH, KEY_COMMA,
    KEY_SLASH, KEY_N, KEY_M, KEY_DOT, KEY_TAB, KEY_SPACE, KEY_GRAVE,
    // What it does not, and the keypad.
    KEY_BACKSPACE, 0, KEY_ESC, KEY_RIGHTCTRL, KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_CAPSLOCK,
    KEY_LEFTALT, KEY_LEFTMETA, KEY_RIGHTSHIFT, KEY_RIGHTALT, KEY_RIGHTMETA, 0, KEY_F17, KEY_KPDOT,
    0, KEY_KPASTERISK, 0, KEY_KPPLUS, 0, KEY_NUMLOCK, KEY_VOLUMEUP, KEY_VOLUMEDOWN, KEY_MUTE,
    KEY_KPSLASH, KEY_KPENTER, 0, KEY_KPMINUS, KEY_F18, KEY_F19, KEY_KPEQUAL, KEY_KP0, KEY_KP1,
    KEY_KP2, KEY_KP3, KEY_KP4, KEY_KP5, KEY_KP6, KEY_KP7, KEY_F20, KEY_KP8, KEY_KP9, KEY_YEN,
    KEY_RO, KEY_KPCOMMA,
    // From F5 on.
    KEY_F5, KEY_F6, KEY_F7, KEY_F3, KEY_F8, KEY_F9, KEY_HANJA, KEY_F11, KEY_HANGEUL, KEY_F13,
    KEY_F16, KEY_F14, 0, KEY_F10, KEY_COMPOSE, KEY_F12, 0, KEY_F15, KEY_INSERT, KEY_HOME,
    KEY_PAGEUP, KEY_DELETE, KEY_F4, KEY_END, KEY_F2, KEY_PAGEDOWN, KEY_F1, KEY_LEFT, KEY_RIGHT,
    KEY_DOWN, KEY_UP
};

/// What the first keys type on a US keyboard, unshifted and shifted; likewise.
constexpr std::string_view
    usCharacters("aAsSdDfFhHgGzZxXcCvV<>bBqQwWeErRyYtT"
                 "1!2@3#4$6^5%=+9(7&-_8*0)]}oOuU[{iIpP\0\0lLjJ'\"kK;:\\|,</?nNmM.>\0\0  `~",
                 102);

/// What keypads type on every layout, from that virtual code on.
constexpr int firstKeypadCode = 65;
constexpr std::string_view keypadCharacters(". * +     /  -  =01234567 89  ,");

struct NamedKey
{
    uint32_t symbol;
    int keyCode;
};

// A key code's first symbol is the one that it is bound by.
constexpr NamedKey namedKeys[] = {
    { 0xff0d, 36 },  { 0xff09, 48 },  { 0xfe20, 48 },  { 0x0020, 49 },  { 0xff08, 51 },
    { 0xff1b, 53 },  { 0xff8d, 76 },  { 0xff50, 115 }, { 0xff55, 116 }, { 0xffff, 117 },
    { 0xff57, 119 }, { 0xff56, 121 }, { 0xff51, 123 }, { 0xff53, 124 }, { 0xff54, 125 },
    { 0xff52, 126 }, { 0xffbe, 122 }, { 0xffbf, 120 }, { 0xffc0, 99 },  { 0xffc1, 118 },
    { 0xffc2, 96 },  { 0xffc3, 97 },  { 0xffc4, 98 },  { 0xffc5, 100 }, { 0xffc6, 101 },
    { 0xffc7, 109 }, { 0xffc8, 103 }, { 0xffc9, 111 },
};

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
    const auto *found = std::ranges::find(evdevCodes, evdevCode);
    return evdevCode == 0 || found == std::end(evdevCodes) ? none
                                                           : static_cast<int>(found - evdevCodes);
}

int toEvdev(int keyCode)
{
    const int code = keyCode >= 0 && keyCode < static_cast<int>(std::size(evdevCodes))
        ? evdevCodes[keyCode]
        : 0;
    return code == 0 ? none : code;
}

int fromSymbol(uint32_t symbol)
{
    const auto *key = std::ranges::find(namedKeys, symbol, &NamedKey::symbol);
    return key == std::end(namedKeys) ? none : key->keyCode;
}

uint32_t toSymbol(int keyCode)
{
    const auto *key = std::ranges::find(namedKeys, keyCode, &NamedKey::keyCode);
    return key == std::end(namedKeys) ? 0 : key->symbol;
}

QString characters(int evdevCode, ShiftKey shift, const SymbolTable &table)
{
    const size_t level = shift == ShiftKey::Down ? 1 : 0;
    const auto code = static_cast<size_t>(fromEvdev(evdevCode)); // Beyond all where there is none.
    // With NumLock's help only.
    const size_t onKeypad = code - firstKeypadCode;
    if (onKeypad < keypadCharacters.size() && keypadCharacters[onKeypad] != ' ')
        return QChar(QLatin1Char(keypadCharacters[onKeypad]));
    const char us = code * 2 + level < usCharacters.size() ? usCharacters[code * 2 + level] : '\0';
    if (isDigitRow(evdevCode) && level == 0)
        return QChar(QLatin1Char(us));
    const int column = latinColumn(table);
    const int row = evdevCode - table.firstEvdevCode;
    if (column == none)
        return us != '\0' ? QString(QLatin1Char(us)).toLower() : QString();
    const size_t place = static_cast<size_t>(row * table.width + column) + level;
    if (row < 0 || place >= table.symbols.size())
        return {};
    return textOf(table.symbols[place]).toLower();
}

}
