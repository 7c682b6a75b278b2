#include "app/settings/LoginItem.h"

#include "platform/Autostart.h"

#include <cstdio>

void LoginItem::set(Autostart &autostart, bool enabled)
{
    // A session keeps its programs' standard error in the system log.
    if (const auto reason = autostart.setEnabled(enabled))
        std::fprintf(stderr, "LoginItem error: %s\n", qUtf8Printable(*reason));
}
