#pragma once

#include "platform/linux/x11/X11ManagerSelection.h"

#include <QAccessible>
#include <QPointer>
#include <QRegion>

#include <xcb/xcb.h>

#include <chrono>
#include <functional>

class QWidget;

/// How a window comes and goes that is mapped from the program's start to its end: while it is
/// hidden it has no shape, for the eye and for the pointer. Programs that remember the windows
/// on the screen while the pointer is busy, as Chromium and all that is built on it do, never
/// find one that is mapped in mid-drag, or again soon after it was unmapped; of changed shapes
/// they hear. To the toolkit such a window is always visible, so the view in it comes and goes
/// with it; to assistive programs it is as it looks.
class X11Presence final : private QObject
{
public:
    /// What is left of such a window, in pixels, where nothing can be translucent.
    using Cut = std::function<QRegion(const QRect &whole, double ratio)>;

    /// The window has its native handle.
    X11Presence(QWidget &window, xcb_connection_t *connection, xcb_window_t root, Cut cut);
    ~X11Presence() override;

    /// Somebody else's, who may end it before or after this.
    void setView(QWidget *view);
    QWidget *view() const { return m_view; }

    /// Hidden, unless it is shown already.
    void map();
    /// From the program's start, which first of all waits for its icon in the tray.
    static constexpr std::chrono::milliseconds mapDelay { 1 };
    void show();
    void hide();
    bool isShown() const { return m_isShown; }

    /// Whether it can be translucent.
    bool canFade() const { return m_compositor.isThere(); }
    /// While it is shown. Hidden it is 0, or compositors would draw its shadow.
    void setOpacity(double opacity);
    /// After whatever changes the cut, the window's size as well.
    void fit();
    /// Each native event of the window.
    void handleEvent(const xcb_generic_event_t &event);

private:
    bool eventFilter(QObject *object, QEvent *event) override;
    xcb_window_t native() const;
    QSize size() const;
    void applyShape();
    void applyOpacity();
    void wipe();
    void prepare();
    void tell(QAccessible::Event kind);

    QWidget &m_window;
    xcb_connection_t *m_connection;
    X11ManagerSelection m_compositor;
    Cut m_cut;
    QPointer<QWidget> m_view;
    QPointer<QWidget> m_focused; // In the view, while that is hidden.
    QSize m_fitted; // Pixels.
    double m_opacity = 1;
    bool m_isNew = true;
    bool m_isShown = false;
    bool m_awaitsExposure = false;
};
