#pragma once

class Autostart;

namespace LoginItem {

/// Switches starting with the session on or off. A refusal goes to the system
/// log and nowhere else.
void set(Autostart &autostart, bool enabled);

}
