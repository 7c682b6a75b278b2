#pragma once

#include <QtGlobal>

namespace X11Time {

/// The X server's present time, asked on a connection of its own: any thread, but
/// not the main one, because it waits for the server to accept a client. 0 where
/// there is no server.
quint32 now();

}
