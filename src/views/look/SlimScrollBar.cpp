#include "views/look/SlimScrollBar.h"

#include "views/look/Look.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {
constexpr double shortestHandle = 24;
constexpr double sideMargin = 2;
constexpr double endMargin = 5; // Clear of the panel's round corners.
}

SlimScrollBar::SlimScrollBar(QWidget *parent)
    : QScrollBar(Qt::Vertical, parent)
{
    setAttribute(Qt::WA_Hover);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
}

QRectF SlimScrollBar::handle() const
{
    const double room = height() - 2 * endMargin;
    const int range = maximum() - minimum();
    const double share = double(pageStep()) / std::max(1, range + pageStep());
    const double length = std::min(room, std::max(shortestHandle, room * share));
    const double top = range > 0 ? (room - length) * (sliderPosition() - minimum()) / range : 0;
    return { sideMargin, endMargin + top, width() - 2 * sideMargin, length };
}

void SlimScrollBar::moveHandle(double top)
{
    const double free = height() - 2 * endMargin - handle().height();
    if (free <= 0)
        return;
    const double share = std::clamp((top - endMargin) / free, 0.0, 1.0);
    setValue(minimum() + static_cast<int>(std::lround(share * (maximum() - minimum()))));
}

void SlimScrollBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::shade(palette(), m_grip || underMouse() ? 0.5 : 0.28));
    const QRectF shape = handle();
    painter.drawRoundedRect(shape, shape.width() / 2, shape.width() / 2);
}

void SlimScrollBar::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const QRectF shape = handle();
    const double y = event->position().y();
    const bool held = y >= shape.top() && y <= shape.bottom();
    m_grip = held ? y - shape.top() : shape.height() / 2;
    if (!held)
        moveHandle(y - *m_grip);
    update();
}

void SlimScrollBar::mouseMoveEvent(QMouseEvent *event)
{
    if (m_grip)
        moveHandle(event->position().y() - *m_grip);
}

void SlimScrollBar::mouseReleaseEvent(QMouseEvent *)
{
    m_grip.reset();
    update();
}

void SlimScrollBar::contextMenuEvent(QContextMenuEvent *event)
{
    event->accept(); // The style's own menu of scroll commands says nothing useful here.
}
