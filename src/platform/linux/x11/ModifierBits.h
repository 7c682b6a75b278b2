#pragma once

#include "platform/Modifiers.h"

#include <xcb/xcb.h>

/// Which bits of a key state the keyboard layout gives to Alt and to Super, and to
/// the keys that lock.
struct ModifierBits
{
    uint16_t option = XCB_MOD_MASK_1;
    uint16_t control = XCB_MOD_MASK_4;
    uint16_t numLock = 0; // 0 where there is none.
    uint16_t scrollLock = 0;

    /// Waits for the server. What the layout does not bind keeps its usual bit.
    static ModifierBits read(xcb_connection_t *connection);
    /// EventModifier bits of a key and button state.
    Modifiers modifiers(uint16_t state) const;
    /// The state in which HotKeyModifier bits are held and nothing else.
    uint16_t state(int hotKeyModifiers) const;
};
