#pragma once

#include "platform/linux/x11/Xcb.h"

#include <QAbstractNativeEventFilter>

#include <functional>

/// What a window of ours wants to know of the window manager: who had the keyboard before, watched
/// while that window is shown, and that another manager has taken over.
class X11ManagerWatch final : private QAbstractNativeEventFilter
{
public:
    X11ManagerWatch(xcb_connection_t *connection, xcb_window_t root, xcb_window_t ours);

    std::function<void()> onManagerChanged;

    // Each waits for the X server.
    void beginFocusWatch();
    void endFocusWatch() { m_isWatching = false; }
    /// Who had the keyboard last and is still there, if anybody.
    xcb_window_t formerWindow();

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void note();

    xcb_connection_t *m_connection;
    Xcb::Atoms m_atoms;
    xcb_window_t m_root;
    xcb_window_t m_ours;
    QList<xcb_window_t> m_windows; // The latest first.
    bool m_isWatching = false;
};
