#pragma once

#include "platform/TabWindow.h"
#include "platform/linux/x11/X11Compositor.h"
#include "platform/linux/x11/XdndTarget.h"

#include <QPointer>
#include <QWidget>

#include <optional>

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
    bool isVisible() const override { return QWidget::isVisible(); }
    void orderFront() override;
    void orderOut() override;
    bool canFade() const override { return m_compositor && m_compositor->isRunning(); }
    void setOpacity(double opacity) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void createNative();
    void applyShape();

    MainQueue &m_queue;
    xcb_connection_t *m_connection;
    // Made when the panel first docks: most starts of the program never see it.
    std::optional<X11Compositor> m_compositor;
    std::optional<XdndTarget> m_drags;
    QPointer<QWidget> m_rootView;
    DockEdge m_edge = DockEdge::Right;
    bool m_pointerInside = false;
};
