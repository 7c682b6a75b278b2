#pragma once

#include <QAccessible>
#include <QRegion>

#include <xcb/xcb.h>

class QWidget;

/// How a window comes and goes that is mapped from the program's start to its end: while it is
/// hidden it has no shape, for the eye and for the pointer. Programs that remember the windows
/// on the screen while the pointer is busy, as Chromium and all that is built on it do, never
/// find one that is mapped in mid-drag, or again soon after it was unmapped; of changed shapes
/// they hear. To the toolkit such a window is always visible, so what is in it must be hidden as
/// well; to assistive programs it is as it looks.
class X11Presence
{
public:
    X11Presence(QWidget &window, xcb_connection_t *connection);
    ~X11Presence();
    X11Presence(const X11Presence &) = delete;
    X11Presence &operator=(const X11Presence &) = delete;

    /// Hidden, unless it is shown already. The window has its native handle.
    void map();
    void show();
    void hide();
    bool isShown() const { return m_isShown; }

    /// While it is shown, in pixels of the window; an empty region is the whole window.
    void setShape(const QRegion &region);
    /// The same. Hidden it is 0, or compositors would draw its shadow.
    void setOpacity(double opacity);

private:
    void applyShape();
    void applyOpacity();
    void tell(QAccessible::Event kind);

    QWidget &m_window;
    xcb_connection_t *m_connection;
    QRegion m_shape;
    double m_opacity = 1;
    bool m_isShown = false;
};
