#pragma once

#include "platform/TabWindow.h"
#include "platform/linux/x11/X11Presence.h"
#include "platform/linux/x11/XdndTarget.h"

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

    void setRootView(QWidget *view) override;
    void place(const QRectF &frame, DockEdge edge) override;
    bool isVisible() const override { return m_presence.isShown(); }
    void orderFront() override;
    void orderOut() override;
    bool canFade() const override { return m_presence.canFade(); }
    void setOpacity(double opacity) override { m_presence.setOpacity(opacity); }

protected:
    bool nativeEvent(const QByteArray &type, void *message, qintptr *result) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void map();
    QRegion cut(const QRect &whole, double ratio) const;
    void raiseBelowLock();

    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    X11Presence m_presence;
    XdndTarget m_drags;
    DockEdge m_edge = DockEdge::Right;
    bool m_pointerInside = false;
};
