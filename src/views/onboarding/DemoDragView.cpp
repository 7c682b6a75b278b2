#include "views/onboarding/DemoDragView.h"

#include "platform/DragSession.h"
#include "views/AccessibleRole.h"
#include "views/Look.h"

#include <QLineF>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

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

QFont DemoDragView::nameFont() const
{
    return Look::font(font(), 12.5, QFont::Medium);
}

QSize DemoDragView::sizeHint() const
{
    const QFontMetrics metrics(nameFont());
    const int name
        = std::min(metrics.horizontalAdvance(text()) + 4, qRound(widestName * Look::textScale));
    return { std::max(fileSize, name) + 2 * padding, fileSize + metrics.height() + 2 * padding };
}

void DemoDragView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 10, 10);
    }
    m_icon.paint(&painter, QRect((width() - fileSize) / 2, padding, fileSize, fileSize));
    painter.setFont(nameFont());
    painter.setPen(Look::text(palette()));
    const QRect line(padding, padding + fileSize, width() - 2 * padding,
                     height() - 2 * padding - fileSize);
    painter.drawText(line, Qt::AlignCenter,
                     painter.fontMetrics().elidedText(text(), Qt::ElideMiddle, line.width()));
}

void DemoDragView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_downEvent = event->position();
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
    // The session may run until the release: what it is to bring up comes first.
    if (onBegin)
        onBegin();
    const QRectF frame(at.x() - draggedSize / 2, at.y() - draggedSize / 2, draggedSize,
                       draggedSize);
    m_session.beginFrom(*this, { { *url, m_icon, frame } }, at, [self = QPointer(this)](bool) {
        if (self && self->onEnd)
            self->onEnd();
    });
}
