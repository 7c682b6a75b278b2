#pragma once

#include "base/MainQueue.h"

#include <QAbstractNativeEventFilter>
#include <QWidget>

#include <xcb/xcb.h>

/// Gives one window of ours the keyboard, although the user did not act in it
/// just now: window managers grant that to a request that comes as a pager's and
/// bears the X server's present time.
class X11Activation final : private QAbstractNativeEventFilter
{
public:
    X11Activation(QWidget &window, xcb_connection_t *connection, xcb_window_t root,
                  MainQueue &queue);
    ~X11Activation() override;

    /// For a window that is shown; waits until the window manager has mapped it.
    void request();
    /// Gives the keyboard to that window instead, which may be anybody's; with none, to whom the
    /// window manager finds.
    void handOver(xcb_window_t other);
    void cancel();

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    xcb_window_t native() const { return static_cast<xcb_window_t>(m_window.internalWinId()); }
    void askTime();
    void activate(xcb_timestamp_t time);
    void setFocus(xcb_window_t to, xcb_timestamp_t time);

    QWidget &m_window;
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    MainQueue &m_queue;
    xcb_atom_t m_timeProperty;
    xcb_atom_t m_activeWindow;
    xcb_window_t m_target = XCB_WINDOW_NONE; // None: to nobody of ours.
    bool m_mapped = false;
    bool m_wanted = false;
    Ticket m_fallback;
};
