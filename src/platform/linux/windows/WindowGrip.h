#pragma once

#include "base/MainQueue.h"

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <optional>

class QMouseEvent;

/// Lets the user take a frameless window by its edges, or by its background when
/// a view says so. The desktop's own interactive move or resize does the work;
/// where it has none, the window follows the pointer.
class WindowGrip
{
public:
    WindowGrip(QWidget &window, MainQueue &queue)
        : m_window(window)
        , m_queue(queue)
    {
    }

    /// Each mouse event before the views get it; true when it is not for them.
    bool handle(const QMouseEvent &event);
    /// Moves the window for the press that is being handled.
    void move() { take({}); }
    /// Forgets what the user does: the window was put elsewhere.
    void release();
    /// Whether the user took the window. Window managers swallow the release, so
    /// this lasts until the next press.
    bool isHeld() const { return m_held; }

private:
    struct Follow
    {
        Qt::Edges edges; // None: the whole window moves.
        QPoint from; // Of the pointer, in points of the virtual desktop.
        QRect geometry;
    };

    Qt::Edges edgesAt(const QPoint &position) const;
    void showCursor(Qt::Edges edges, const QPoint &position);
    void take(Qt::Edges edges);
    void follow(const QPoint &to);

    QWidget &m_window;
    MainQueue &m_queue;
    bool m_held = false;
    Qt::Edges m_shownEdges; // Those whose cursor shows.
    Ticket m_cursorChange;
    QPoint m_pressedAt;
    std::optional<Follow> m_follow;
};
