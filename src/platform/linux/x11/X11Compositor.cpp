#include "platform/linux/x11/X11Compositor.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

#include <xcb/xfixes.h>

#include <QCoreApplication>

X11Compositor::X11Compositor(xcb_connection_t *connection, xcb_window_t root)
{
    Xcb::Atoms atoms(connection);
    m_selection
        = atoms("_NET_WM_CM_S" + QByteArray::number(X11Root::screenNumber(connection, root)));
    // Watching before asking, so that no change falls between the two.
    const auto *fixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
    if (fixes && fixes->present) {
        m_notifyType = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
        xcb_xfixes_select_selection_input(
            connection, root, m_selection,
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    m_running = Xcb::selectionOwner(connection, m_selection) != Xcb::none;
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11Compositor::~X11Compositor()
{
    QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool X11Compositor::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if (m_notifyType == 0 || (event->response_type & 0x7f) != m_notifyType)
        return false;
    const auto *notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event);
    if (notify->selection != m_selection)
        return false;
    const bool running
        = notify->subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER && notify->owner != 0;
    if (running != m_running) {
        m_running = running;
        if (onChange)
            onChange();
    }
    return false;
}
