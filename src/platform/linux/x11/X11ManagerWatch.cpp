#include "platform/linux/x11/X11ManagerWatch.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

constexpr quint32 mostWindows = 4096;
constexpr qsizetype mostFormer = 8;

}

X11ManagerWatch::X11ManagerWatch(xcb_connection_t *connection, xcb_window_t root, xcb_window_t ours)
    : m_connection(connection)
    , m_atoms(connection)
    , m_root(root)
    , m_ours(ours)
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

void X11ManagerWatch::beginFocusWatch()
{
    m_isWatching = true;
    m_windows.clear();
    note();
}

xcb_window_t X11ManagerWatch::formerWindow()
{
    const auto present = Xcb::property32(m_connection, m_root, m_atoms("_NET_CLIENT_LIST"),
                                         XCB_ATOM_WINDOW, mostWindows);
    for (const xcb_window_t window : m_windows) {
        if (present.contains(window))
            return window;
    }
    return Xcb::none;
}

/// The toolkit watches the root window's properties already.
bool X11ManagerWatch::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event);
    if (m_isWatching && notify->atom == m_atoms("_NET_ACTIVE_WINDOW"))
        note();
    if (notify->atom == m_atoms("_NET_SUPPORTING_WM_CHECK") && notify->window == m_root
        && notify->state == XCB_PROPERTY_NEW_VALUE && onManagerChanged)
        onManagerChanged();
    return false;
}

void X11ManagerWatch::note()
{
    const xcb_window_t active
        = Xcb::property32(m_connection, m_root, m_atoms("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 1)
              .value(0);
    // While the keyboard goes from one to the next, nobody has it.
    if (active == Xcb::none || active == m_ours)
        return;
    m_windows.removeAll(active);
    m_windows.prepend(active);
    m_windows.resize(std::min(m_windows.size(), mostFormer));
}
