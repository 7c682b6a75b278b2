#pragma once

#include <QRectF>

#include <functional>

class QWidget;

enum class DockEdge { Left, Right };

/// A small window that lies flat against one side of a screen, with the corners
/// on its other side rounded: above all others, full-screen ones included, on
/// every desktop, and never with the keyboard. Frames are points of the virtual
/// desktop, y downwards. Main thread.
class TabWindow
{
public:
    virtual ~TabWindow() = default;

    static constexpr QSizeF size { 22, 60 };
    static constexpr int cornerRadius = 10;

    /// What the window shows; it fills the frame, stays its owner's and gets no mouse.
    virtual void setRootView(QWidget *view) = 0;
    virtual void place(const QRectF &frame, DockEdge edge) = 0;
    virtual bool isVisible() const = 0;
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
    /// Whether setOpacity has an effect: without a compositor it does not.
    virtual bool canFade() const = 0;
    virtual void setOpacity(double opacity) = 0; // 0 to 1.

    /// The pointer moved into it, with no button down. A window that comes up under
    /// a pointer at rest is not entered.
    std::function<void()> onPointerEntered;
    std::function<void()> onPointerLeft;
    std::function<void()> onPressed; // By the left button.
    /// A drag that the panel would take hovers over it. The source is told that it
    /// may drop, so that it stays there, but a drop on this window ends not accepted.
    std::function<void()> onDragEntered;
};
