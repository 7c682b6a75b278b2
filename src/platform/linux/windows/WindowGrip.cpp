#include "platform/linux/windows/WindowGrip.h"

#include <QMouseEvent>
#include <QWindow>

#include <algorithm>

namespace {

constexpr int edgeWidth = 6;
constexpr int cornerWidth = 14; // Along an edge: wider, for a corner is hard to hit.

Qt::CursorShape cursorShape(Qt::Edges edges)
{
    if (edges == (Qt::TopEdge | Qt::LeftEdge) || edges == (Qt::BottomEdge | Qt::RightEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::TopEdge | Qt::RightEdge) || edges == (Qt::BottomEdge | Qt::LeftEdge))
        return Qt::SizeBDiagCursor;
    return (edges & (Qt::LeftEdge | Qt::RightEdge)) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

}

bool WindowGrip::handle(const QMouseEvent &event)
{
    const QPoint position = event.position().toPoint();
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        release();
        m_pressedAt = event.globalPosition().toPoint();
        if (event.button() != Qt::LeftButton || !edgesAt(position))
            return false;
        take(edgesAt(position));
        return true;
    case QEvent::MouseMove:
        if (m_follow) {
            follow(event.globalPosition().toPoint());
            return true;
        }
        if (event.buttons() == Qt::NoButton)
            showCursor(edgesAt(position), position);
        return false;
    case QEvent::MouseButtonRelease:
        if (!m_follow || event.button() != Qt::LeftButton)
            return false;
        m_follow.reset();
        return true;
    default:
        return false;
    }
}

void WindowGrip::release()
{
    m_held = false;
    m_follow.reset();
}

Qt::Edges WindowGrip::edgesAt(const QPoint &position) const
{
    const QRect rect = m_window.rect();
    const int left = position.x();
    const int top = position.y();
    const int right = rect.width() - 1 - left;
    const int bottom = rect.height() - 1 - top;
    if (std::min({ left, top, right, bottom }) >= edgeWidth || !rect.contains(position))
        return {};
    Qt::Edges edges;
    edges.setFlag(Qt::LeftEdge, left < cornerWidth);
    edges.setFlag(Qt::RightEdge, right < cornerWidth);
    edges.setFlag(Qt::TopEdge, top < cornerWidth);
    edges.setFlag(Qt::BottomEdge, bottom < cornerWidth);
    return edges;
}

/// Over the cursors of the views below, which are shown again beyond the edge. A
/// view shows its own when it gets this event, so the edge's follows after that.
void WindowGrip::showCursor(Qt::Edges edges, const QPoint &position)
{
    if (!edges && !m_shownEdges)
        return;
    m_shownEdges = edges;
    if (!edges) {
        const QWidget *view = m_window.childAt(position);
        m_window.windowHandle()->setCursor((view ? view : &m_window)->cursor());
        return;
    }
    m_cursorChange = m_queue.after(0, [this] {
        if (m_shownEdges)
            m_window.windowHandle()->setCursor(cursorShape(m_shownEdges));
    });
}

void WindowGrip::take(Qt::Edges edges)
{
    m_held = true;
    QWindow *window = m_window.windowHandle();
    const bool started = edges ? window->startSystemResize(edges) : window->startSystemMove();
    if (!started)
        m_follow = Follow { edges, m_pressedAt, m_window.geometry() };
}

void WindowGrip::follow(const QPoint &to)
{
    const QPoint by = to - m_follow->from;
    QRect next = m_follow->geometry;
    if (!m_follow->edges) {
        m_window.move(next.topLeft() + by);
        return;
    }
    const QSize least = m_window.minimumSize();
    if (m_follow->edges & Qt::LeftEdge)
        next.setLeft(std::min(next.left() + by.x(), next.right() + 1 - least.width()));
    if (m_follow->edges & Qt::RightEdge)
        next.setRight(std::max(next.right() + by.x(), next.left() - 1 + least.width()));
    if (m_follow->edges & Qt::TopEdge)
        next.setTop(std::min(next.top() + by.y(), next.bottom() + 1 - least.height()));
    if (m_follow->edges & Qt::BottomEdge)
        next.setBottom(std::max(next.bottom() + by.y(), next.top() - 1 + least.height()));
    m_window.setGeometry(next);
}
