#pragma once

#include <QAbstractNativeEventFilter>

#include <xcb/xcb.h>

#include <functional>

/// Whether a manager of the session runs, which has a selection for each screen while it does:
/// the compositing manager, which is what makes translucent windows translucent, or the one of
/// embedded windows. It may come and go at any time.
class X11ManagerSelection final : private QAbstractNativeEventFilter
{
public:
    static constexpr char compositing[] = "_NET_WM_CM_S";
    /// Source: https://specifications.freedesktop.org/systemtray-spec
    static constexpr char tray[] = "_NET_SYSTEM_TRAY_S";

    /// For the screen with that root window.
    X11ManagerSelection(xcb_connection_t *connection, xcb_window_t root, const char *name);

    bool isThere() const { return m_isThere; }
    /// It has come or gone, or another one has followed it.
    std::function<void()> onChange;

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

    xcb_atom_t m_selection = XCB_ATOM_NONE;
    int m_notifyType = 0; // 0: this server does not tell.
    bool m_isThere = false;
};
