#include "platform/linux/x11/X11Time.h"

#include "platform/linux/x11/Xcb.h"

quint32 X11Time::now()
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    if (xcb_connection_has_error(connection.get()))
        return 0;
    const auto window = Xcb::unseenWindow(connection.get());
    // A change by nothing comes back with the time.
    xcb_change_property(connection.get(), XCB_PROP_MODE_APPEND, window, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, 0, nullptr);
    xcb_flush(connection.get());
    while (const Xcb::Owned<xcb_generic_event_t> event { xcb_wait_for_event(connection.get()) }) {
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY)
            return reinterpret_cast<const xcb_property_notify_event_t *>(event.get())->time;
    }
    return 0;
}
