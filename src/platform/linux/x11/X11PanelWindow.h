#pragma once

#include "platform/PanelWindow.h"
#include "platform/linux/windows/WindowGrip.h"
#include "platform/linux/x11/KeyRouter.h"
#include "platform/linux/x11/X11Activation.h"
#include "platform/linux/x11/X11ManagerWatch.h"
#include "platform/linux/x11/X11Presence.h"
#include "platform/linux/x11/Xcb.h"

#include <QWidget>

class QMouseEvent;

/// The panel as an X11 window that the window manager manages: that is what
/// keeps it above the others and lets it have the keyboard. The program must run
/// on the toolkit's xcb platform.
class X11PanelWindow final : public QWidget, public PanelWindow
{
public:
    explicit X11PanelWindow(MainQueue &queue);

    void setRootView(QWidget *view) override;
    QRectF frame() const override { return geometry(); }
    void setFrame(const QRectF &frame) override;
    void setSmallestSize(const QSizeF &size) override { setMinimumSize(size.toSize()); }
    bool isVisible() const override { return m_presence.isShown(); }
    void orderFront() override;
    void orderOut() override;
    void focus() override { m_activation.request(); }
    bool canFade() const override { return m_presence.canFade(); }
    void setOpacity(double opacity) override { m_presence.setOpacity(opacity); }
    void setSlide(const QPointF &offset) override;
    void performDrag() override { m_grip.move(); }

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
    bool nativeEvent(const QByteArray &type, void *message, qintptr *result) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    xcb_window_t native() const { return static_cast<xcb_window_t>(internalWinId()); }
    xcb_window_t createNative();
    void map();
    void writeHints();
    void askForPlace();
    void moveToTop();
    quint32 rootProperty(const char *name, xcb_atom_t type);
    void acceptKeyboard(bool accept);
    void giveKeyboardBack();
    void layoutRootView();
    void noteFrame();
    bool filterMouse(const QMouseEvent &event);

    MainQueue &m_queue;
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    Xcb::Atoms m_atoms;
    X11Presence m_presence;
    X11Activation m_activation;
    X11ManagerWatch m_manager;
    WindowGrip m_grip;
    KeyRouter m_keys;
    QList<quint32> m_wmHints; // As the toolkit wrote them.
    QList<quint32> m_protocols;
    QPointF m_slide;
    QRect m_knownGeometry; // The last that was set or reported.
    double m_settledAt = 0; // Uptime until which the desktop may still answer a frame that we set.
};
