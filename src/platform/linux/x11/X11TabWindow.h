#pragma once

#include "platform/TabWindow.h"
#include "platform/linux/x11/X11Compositor.h"
#include "platform/linux/x11/X11Presence.h"
#include "platform/linux/x11/XdndTarget.h"

#include <QPointer>
#include <QWidget>

class MainQueue;

/// The tab as an X11 window that the window manager does not manage: openbox
/// keeps no managed one above a full-screen window, and none of them lets one
/// stand exactly on the border between two monitors. The program must run on the
/// toolkit's xcb platform.
class X11TabWindow final : public QWidget, public TabWindow
{
public:
    explicit X11TabWindow(MainQueue &queue);
    ~X11TabWindow() override;

    void setRootView(QWidget *view) override;
    void place(const QRectF &frame, DockEdge edge) override;
    bool isVisible() const override { return m_presence.isShown(); }
    void orderFront() override;
    void orderOut() override;
    bool canFade() const override { return m_compositor.isRunning(); }
    void setOpacity(double opacity) override;

protected:
    bool nativeEvent(const QByteArray &type, void *message, qintptr *result) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    xcb_window_t createNative();
    void applyShape();
    void raiseBelowLock();

    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    X11Compositor m_compositor;
    X11Presence m_presence;
    XdndTarget m_drags;
    QPointer<QWidget> m_rootView;
    DockEdge m_edge = DockEdge::Right;
    QSize m_shapedSize; // Pixels.
    bool m_pointerInside = false;
};
