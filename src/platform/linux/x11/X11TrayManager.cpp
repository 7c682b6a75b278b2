#include "platform/linux/x11/X11TrayManager.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

#include <QCoreApplication>

#include <xcb/xfixes.h>

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
    const auto *fixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
    m_selection = Xcb::Atoms(connection)("_NET_SYSTEM_TRAY_S" + QByteArray::number(screen));
    if (m_selection == Xcb::none)
        return;
    if (fixes != nullptr && fixes->present != 0) {
        m_selectionNotify = static_cast<uint8_t>(fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
        xcb_discard_reply(connection, xcb_xfixes_query_version(connection, 5, 0).sequence);
        xcb_xfixes_select_selection_input(
            connection, X11Root::ofScreen(connection, screen), m_selection,
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
        QCoreApplication::instance()->installNativeEventFilter(this);
    }
    // Asked after watching has begun, so that nothing is missed between.
    m_isThere = Xcb::selectionOwner(connection, m_selection) != Xcb::none;
}

X11TrayManager::~X11TrayManager()
{
    QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool X11TrayManager::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != m_selectionNotify)
        return false;
    const auto *notify = static_cast<const xcb_xfixes_selection_notify_event_t *>(message);
    if (notify->selection == m_selection) {
        m_isThere = notify->owner != Xcb::none;
        if (onChange)
            onChange();
    }
    return false;
}
