#pragma once

#include "platform/linux/session/WindowSystem.h"

/// The settings manager of X11. Source: https://specifications.freedesktop.org/xsettings-spec
namespace XSettings {

/// Asks the X server, over a connection of its own; empty where there is no
/// server or no manager. On any thread.
ManagedSettings read();

/// Reads the manager's property: what comes before the first fault in it.
ManagedSettings parse(const QByteArray &property);

}
