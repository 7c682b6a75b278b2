#pragma once

#include "base/MainQueue.h"
#include "platform/linux/x11/Xcb.h"

#include <QAbstractNativeEventFilter>
#include <QWidget>

/// Gives one window of ours the keyboard, although the user did not act in it
/// just now: window managers grant that to a request that comes as a pager's and
/// bears the X server's present time.
class X11Activation final : public QObject, private QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    /// Shows an ordinary window of ours, also one that is minimised, in front and with the
    /// keyboard. The program mostly acts without having been the active one, which is when
    /// window managers open windows behind.
    static void bringToFront(QWidget &window, MainQueue &queue);

    X11Activation(QWidget &window, xcb_connection_t *connection, xcb_window_t root,
                  MainQueue &queue);

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
    Xcb::Atoms m_atoms;
    xcb_window_t m_target = XCB_WINDOW_NONE; // None: to nobody of ours.
    bool m_mapped = false;
    bool m_wanted = false;
    Ticket m_fallback;
};
