#pragma once

#include "platform/linux/x11/WatchConnection.h"
#include "platform/linux/x11/XSettings.h"

#include <functional>

/// Follows the settings manager of the screen, whoever it is at the moment; never
/// waits for the server. The connection outlives it, and nothing comes before start.
/// Main thread.
class XSettingsWatch final : public SettingsManager
{
public:
    explicit XSettingsWatch(WatchConnection &connection);

    void start() override;

private:
    void handleEvent(const xcb_generic_event_t &event);
    void watchSelection();
    void follow(xcb_window_t owner);
    void ask();

    WatchConnection &m_connection;
    xcb_atom_t m_selection = Xcb::none;
    xcb_atom_t m_settings = Xcb::none;
    xcb_window_t m_owner = Xcb::none;
};
