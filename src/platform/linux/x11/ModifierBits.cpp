#include "platform/linux/x11/ModifierBits.h"

#include "platform/linux/x11/Xcb.h"

#include <xcb/xcb_keysyms.h>

#include <algorithm>
#include <array>
#include <memory>

namespace {

// From keysymdef.h, which comes with a library that nothing else here needs.
constexpr std::array<xcb_keysym_t, 4> optionKeys { 0xffe9, 0xffea, 0xffe7, 0xffe8 }; // Alt, Meta.
constexpr std::array<xcb_keysym_t, 2> controlKeys { 0xffeb, 0xffec }; // Super.
constexpr std::array<xcb_keysym_t, 1> numLockKeys { 0xff7f };
constexpr std::array<xcb_keysym_t, 1> scrollLockKeys { 0xff14 };

struct FreeSymbols
{
    void operator()(xcb_key_symbols_t *symbols) const { xcb_key_symbols_free(symbols); }
};

template<typename Keys>
bool isAmong(xcb_key_symbols_t *symbols, xcb_keycode_t key, const Keys &keys)
{
    return key != XCB_NO_SYMBOL
        && std::find(keys.begin(), keys.end(), xcb_key_symbols_get_keysym(symbols, key, 0))
        != keys.end();
}

}

ModifierBits ModifierBits::read(xcb_connection_t *connection)
{
    ModifierBits bits;
    // The symbols' request goes out first, so that both are waited for together.
    const std::unique_ptr<xcb_key_symbols_t, FreeSymbols> symbols(
        xcb_key_symbols_alloc(connection));
    const auto map = Xcb::owned(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    if (!map || !symbols)
        return bits;
    const int width = map->keycodes_per_modifier;
    const xcb_keycode_t *keys = xcb_get_modifier_mapping_keycodes(map.get());
    // From the last modifier to the first: of several with the same key the lowest counts.
    for (int modifier = XCB_MAP_INDEX_5; modifier >= XCB_MAP_INDEX_1; --modifier) {
        for (int key = modifier * width; key < (modifier + 1) * width; ++key) {
            const auto bit = static_cast<uint16_t>(1U << modifier);
            if (isAmong(symbols.get(), keys[key], optionKeys))
                bits.option = bit;
            if (isAmong(symbols.get(), keys[key], controlKeys))
                bits.control = bit;
            if (isAmong(symbols.get(), keys[key], numLockKeys))
                bits.numLock = bit;
            if (isAmong(symbols.get(), keys[key], scrollLockKeys))
                bits.scrollLock = bit;
        }
    }
    return bits;
}

Modifiers ModifierBits::modifiers(uint16_t state) const
{
    const auto held
        = [state](unsigned bit, Modifiers modifier) { return state & bit ? modifier : 0; };
    return held(XCB_MOD_MASK_SHIFT, EventModifier::Shift)
        | held(XCB_MOD_MASK_CONTROL, EventModifier::Command) | held(option, EventModifier::Option)
        | held(control, EventModifier::Control);
}

uint16_t ModifierBits::state(int hotKeyModifiers) const
{
    const auto wanted
        = [=](int modifier, unsigned bit) { return hotKeyModifiers & modifier ? bit : 0; };
    return static_cast<uint16_t>(wanted(HotKeyModifier::Shift, XCB_MOD_MASK_SHIFT)
                                 | wanted(HotKeyModifier::Command, XCB_MOD_MASK_CONTROL)
                                 | wanted(HotKeyModifier::Option, option)
                                 | wanted(HotKeyModifier::Control, control));
}
