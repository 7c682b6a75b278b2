#include "platform/linux/x11/X11TrayManager.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

#include <cstdlib>

X11TrayManager::X11TrayManager()
{
    xcb_connection_t *connection = Xcb::toolkitConnection();
    char *host = nullptr;
    int display = 0;
    int screen = 0;
    if (connection == nullptr || xcb_parse_display(nullptr, &host, &display, &screen) == 0)
        return;
    std::free(host);
    m_manager.emplace(connection, X11Root::ofScreen(connection, screen), X11ManagerSelection::tray);
    m_manager->onChange = [this] {
        if (onChange)
            onChange();
    };
}
