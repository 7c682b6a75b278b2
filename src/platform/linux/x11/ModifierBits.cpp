#include "platform/linux/x11/ModifierBits.h"

#include "platform/linux/x11/Xcb.h"

#include <xcb/xcb_keysyms.h>

#include <array>
#include <memory>

namespace {

/// The keys that modify or lock, by what they do. From keysymdef.h, which comes with a library
/// that nothing else here needs.
struct KnownKey
{
    xcb_keysym_t symbol;
    uint16_t ModifierBits::*bit;
};
constexpr std::array<KnownKey, 8> knownKeys { {
    { 0xffe9, &ModifierBits::option }, // Alt.
    { 0xffea, &ModifierBits::option },
    { 0xffe7, &ModifierBits::option }, // Meta.
    { 0xffe8, &ModifierBits::option },
    { 0xffeb, &ModifierBits::control }, // Super.
    { 0xffec, &ModifierBits::control },
    { 0xff7f, &ModifierBits::numLock },
    { 0xff14, &ModifierBits::scrollLock },
} };

struct FreeSymbols
{
    void operator()(xcb_key_symbols_t *symbols) const { xcb_key_symbols_free(symbols); }
};

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
            const auto symbol = keys[key] == XCB_NO_SYMBOL
                ? XCB_NO_SYMBOL
                : xcb_key_symbols_get_keysym(symbols.get(), keys[key], 0);
            for (const KnownKey &known : knownKeys) {
                if (known.symbol == symbol)
                    bits.*known.bit = static_cast<uint16_t>(1U << modifier);
            }
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
