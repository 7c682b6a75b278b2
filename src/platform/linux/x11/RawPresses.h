#pragma once

#include "platform/PointerMonitor.h"

#include <xcb/xinput.h>

#include <optional>
#include <set>

/// Tells in raw events what the left button does, and the finger that acts as the pointer. They
/// do not say which finger that is: it is the first that goes down on a screen, until it is
/// lifted. One on a touchpad points at nothing.
class RawPresses
{
public:
    /// Its physical number, which raw events carry.
    void setLeftButton(uint32_t button) { m_leftButton = button; }
    /// Nothing that touches it counts before that.
    void learn(const xcb_input_xi_query_device_reply_t &devices);
    bool knows(uint16_t device) const { return m_known.contains(device); }

    /// Moved is any motion. Raw events of all kinds are laid out alike.
    std::optional<PointerEvent> meaning(const xcb_input_raw_button_press_event_t &event);

private:
    uint32_t m_leftButton = 1;
    std::set<uint16_t> m_known;
    std::set<uint16_t> m_screens;
    std::optional<uint32_t> m_finger; // That is down.
};
