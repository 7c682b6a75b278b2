#pragma once

#include "platform/HotKey.h"
#include "platform/linux/x11/WatchConnection.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <vector>

/// A passive grab on every root window, once for each combination of the lock
/// keys, whose bits would keep it from matching. It goes by the physical key, so
/// that switching between layouts changes nothing. Core grabs, because only they
/// tell of another program that has the key.
class X11HotKey final : public HotKey
{
public:
    explicit X11HotKey(WatchConnection &connection);
    X11HotKey(const X11HotKey &) = delete;
    X11HotKey &operator=(const X11HotKey &) = delete;

    bool bind(int keyCode, int modifiers) override;
    void unbind() override;

private:
    struct Combination
    {
        xcb_keycode_t key;
        int modifiers; // HotKeyModifier bits.
    };

    int evdevCodeOf(int keyCode) const;
    void handleEvent(const xcb_generic_event_t &event);
    void handleKey(const xcb_key_press_event_t &event); // A release as well.
    void remake();
    std::vector<uint16_t> wantedStates() const;
    bool grab(const std::vector<uint16_t> &states);
    void release(const std::vector<uint16_t> &states);

    WatchConnection &m_connection;
    std::optional<Combination> m_bound;
    std::vector<uint16_t> m_states; // Modifier states for which the key is grabbed.
    std::optional<xcb_timestamp_t> m_releasedAt; // By the X server's clock, in milliseconds.
};
