#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <initializer_list>

/// The root window, through which a client talks to the window manager.
namespace X11Root {

/// Of the screen that the toolkit's windows are on.
xcb_window_t ofToolkit(xcb_connection_t *connection);
/// Of the screen with that number, which a display's name may give.
xcb_window_t ofScreen(xcb_connection_t *connection, int number);
/// The n of selections that exist once a screen ("_NET_WM_CM_Sn").
int screenNumber(xcb_connection_t *connection, xcb_window_t root);
/// The window of a screen lock, if one covers the whole screen: managed by nobody, not the window
/// manager's own, and not of that connection. Waits for the X server.
xcb_window_t lock(xcb_connection_t *connection, xcb_window_t root);
/// Asks the window manager for something about a window of ours.
void send(xcb_connection_t *connection, xcb_window_t root, xcb_window_t about, xcb_atom_t type,
          std::initializer_list<uint32_t> data);

}
