#include "platform/linux/x11/X11ManagerSelection.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

#include <xcb/xfixes.h>

#include <QCoreApplication>

X11ManagerSelection::X11ManagerSelection(xcb_connection_t *connection, xcb_window_t root,
                                         const char *name)
    : m_selection(
        Xcb::Atoms(connection)(name + QByteArray::number(X11Root::screenNumber(connection, root))))
{
    // Watching before asking, so that no change falls between the two.
    const auto *fixes = xcb_get_extension_data(connection, &xcb_xfixes_id);
    if (fixes && fixes->present) {
        m_notifyType = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
        xcb_discard_reply(connection, xcb_xfixes_query_version(connection, 5, 0).sequence);
        xcb_xfixes_select_selection_input(
            connection, root, m_selection,
            XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    }
    m_isThere = Xcb::selectionOwner(connection, m_selection) != Xcb::none;
    QCoreApplication::instance()->installNativeEventFilter(this);
}

bool X11ManagerSelection::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if (m_notifyType == 0 || (event->response_type & 0x7f) != m_notifyType)
        return false;
    const auto *notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event);
    if (notify->selection != m_selection)
        return false;
    m_isThere
        = notify->subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER && notify->owner != 0;
    if (onChange)
        onChange();
    return false;
}
