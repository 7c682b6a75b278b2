#include "views/onboarding/DemoDragView.h"

#include "platform/DragSession.h"
#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"

#include <QLineF>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QStyle>

namespace {
constexpr double dragDistance = 3; // Points from the press to where a drag begins.
constexpr double draggedSize = 56; // Points.
constexpr int fileSize = 80;
constexpr int padding = 10;
constexpr int widestName = 220; // At the usual size of texts.
}

DemoDragView::DemoDragView(DragSession &session, QIcon icon, QWidget *parent)
    : QAbstractButton(parent)
    , m_session(session)
    , m_icon(std::move(icon))
{
    setAccessibleRole(*this, QAccessible::Button, [this] { click(); });
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::OpenHandCursor);
    connect(this, &QAbstractButton::clicked, this, [this] {
        if (onPut)
            onPut();
    });
}

void DemoDragView::setName(const QString &name)
{
    setText(name);
    updateGeometry();
}

void DemoDragView::setReach(int diameter)
{
    m_reach = diameter;
}

QFont DemoDragView::nameFont() const
{
    return Look::font(font(), 12.5, QFont::Medium);
}

QSize DemoDragView::sizeHint() const
{
    const QFontMetrics metrics(nameFont());
    const int name
        = std::min(metrics.horizontalAdvance(text()) + 4, qRound(widestName * Look::textScale));
    return QSize(std::max(fileSize, name) + 2 * padding, fileSize + metrics.height() + 2 * padding)
        .expandedTo({ m_reach, m_reach });
}

void DemoDragView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (hasFocus()) {
        painter.setPen(QPen(Look::ring(palette()), 1.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 10, 10);
    }
    painter.setFont(nameFont());
    painter.setPen(Look::text(palette()));
    const int lineHeight = painter.fontMetrics().height();
    const int top = (height() - fileSize - lineHeight) / 2;
    m_icon.paint(&painter, QRect((width() - fileSize) / 2, top, fileSize, fileSize));
    const QRect line(padding, top + fileSize, width() - 2 * padding, lineHeight);
    painter.drawText(line, Qt::AlignCenter,
                     painter.fontMetrics().elidedText(text(), Qt::ElideMiddle, line.width()));
}

void DemoDragView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && hitButton(event->position().toPoint()))
        m_downEvent = event->position();
    else
        event->ignore(); // The window's background takes it.
}

/// The file with its name, and the whole ring round it.
bool DemoDragView::hitButton(const QPoint &position) const
{
    const QRect content = QStyle::alignedRect(
        layoutDirection(), Qt::AlignCenter,
        { width(), fileSize + QFontMetrics(nameFont()).height() + 2 * padding }, rect());
    return content.contains(position)
        || QLineF(QRectF(rect()).center(), position).length() <= m_reach / 2.0;
}

void DemoDragView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_downEvent || !url || QLineF(*m_downEvent, event->position()).length() < dragDistance)
        return;
    const QPointF at = *m_downEvent;
    m_downEvent.reset();
    beginDrag(at);
}

void DemoDragView::mouseReleaseEvent(QMouseEvent *)
{
    m_downEvent.reset();
}

void DemoDragView::beginDrag(const QPointF &at)
{
    // The session may end at once: what it is to bring up comes first.
    if (onBegin)
        onBegin();
    const QRectF frame(at.x() - draggedSize / 2, at.y() - draggedSize / 2, draggedSize,
                       draggedSize);
    m_session.beginFrom(*this, { { *url, m_icon, frame } }, at, [self = QPointer(this)](bool) {
        if (self && self->onEnd)
            self->onEnd();
    });
}
