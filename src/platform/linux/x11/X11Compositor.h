#pragma once

#include <QAbstractNativeEventFilter>

#include <xcb/xcb.h>

#include <functional>

/// Whether a compositing manager runs, which is what makes translucent windows
/// translucent. It may come and go at any time.
class X11Compositor final : private QAbstractNativeEventFilter
{
public:
    /// For the screen with that root window.
    X11Compositor(xcb_connection_t *connection, xcb_window_t root);
    ~X11Compositor() override;
    X11Compositor(const X11Compositor &) = delete;
    X11Compositor &operator=(const X11Compositor &) = delete;

    bool isRunning() const { return m_running; }
    std::function<void()> onChange;

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

    xcb_atom_t m_selection = XCB_ATOM_NONE; // Owned by the manager while it runs.
    int m_notifyType = 0; // 0: this server does not tell.
    bool m_running = false;
};
