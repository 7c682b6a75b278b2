#pragma once

#include "platform/KeyEvent.h"

#include <QRectF>

#include <functional>

class QWidget;

enum class WindowButtonEvent { LeftDown, LeftDragged, LeftUp };

/// A frameless window above all others, on every desktop, that is shown without
/// taking the keyboard and takes it when it is clicked. It can be resized by its
/// edges; the desktop may not move it while it is being shown. Frames are
/// points of the virtual desktop, y downwards. Main thread.
class PanelWindow
{
public:
    virtual ~PanelWindow() = default;

    /// At plain text: 210 by 240 for the view, and a border of one point around it.
    static constexpr QSizeF smallestSize { 212, 242 };
    /// The user cannot make it smaller, and it does not stay smaller.
    virtual void setSmallestSize(const QSizeF &size) = 0;

    /// What the window shows; it fills the frame but for its border, and stays its owner's.
    virtual void setRootView(QWidget *view) = 0;

    virtual QRectF frame() const = 0;
    virtual void setFrame(const QRectF &frame) = 0;
    virtual bool isVisible() const = 0;
    /// Brings it on screen and above the others; the front application keeps the keyboard.
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
    /// Gives it the keyboard, also against the desktop's focus-stealing prevention.
    virtual void focus() = 0;

    /// Whether setOpacity and setSlide have an effect: without a compositor they do not.
    virtual bool canFade() const = 0;
    virtual void setOpacity(double opacity) = 0; // 0 to 1.
    /// Moves what is painted, clipped by the window, which itself stays where it is.
    virtual void setSlide(const QPointF &offset) = 0;

    /// Runs the desktop's own interactive move for the press that is being handled.
    virtual void performDrag() = 0;

    /// The user moved or resized it; never called for setFrame().
    std::function<void()> onUserFrame;
    /// Each key press; true when it was consumed.
    std::function<bool(const KeyEvent &)> onKey;
    /// The close button was used.
    std::function<void()> onClose;
    /// Each left-button event before the views see it, at a position in the
    /// window; true keeps it from them.
    std::function<bool(WindowButtonEvent, const QPointF &)> onButton;
};
