#include "platform/linux/x11/X11TrayManager.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

X11TrayManager::X11TrayManager()
{
    xcb_connection_t *connection = Xcb::toolkitConnection();
    if (connection == nullptr)
        return;
    m_manager.emplace(connection, X11Root::ofToolkit(connection), X11ManagerSelection::tray);
    m_manager->onChange = [this] {
        if (onChange)
            onChange();
    };
}
