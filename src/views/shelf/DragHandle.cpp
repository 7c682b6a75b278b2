#include "views/shelf/DragHandle.h"

#include "views/look/AccessibleRole.h"
#include "views/look/Brand.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"
#include "views/look/Symbols.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace {
constexpr int capsuleHeight = 20;
constexpr int capsulePadding = 8;
constexpr int countGap = 4;

/// A symbol of a font of 9.5 points is a little larger than the font.
double documentsSize()
{
    return 11 * Look::symbolScale();
}

}

DragHandle::DragHandle(Symbols &symbols, DragSession &session, Icons &icons, QWidget *parent)
    : QWidget(parent)
    , m_symbols(symbols)
    , m_drag(session, icons)
{
    setCursor(Qt::OpenHandCursor);
    setAccessibleRole(*this, QAccessible::Graphic);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void DragHandle::setContent(Carries carries, int count)
{
    m_carries = carries;
    m_count = QString::number(count);
    setAccessibleDescription(m_count);
    updateGeometry();
    update();
}

void DragHandle::setRoom(Room room)
{
    if (room == m_room)
        return;
    m_room = room;
    updateGeometry();
    update();
}

void DragHandle::setHelp(const QString &text)
{
    ToolTip::set(*this, text);
    setAccessibleName(text);
}

QFont DragHandle::countFont() const
{
    return Look::font(font(), 11, QFont::DemiBold);
}

/// All digits take the room of the widest, so that the capsule does not tremble
/// while the count runs.
int DragHandle::digitWidth() const
{
    const QFontMetrics metrics(countFont());
    int widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
    return widest;
}

int DragHandle::symbolWidth() const
{
    return m_room == Room::Enough ? qRound(documentsSize()) + countGap : 0;
}

QSize DragHandle::sizeHint() const
{
    const int width
        = 2 * capsulePadding + symbolWidth() + digitWidth() * static_cast<int>(m_count.size());
    return { width, std::max(capsuleHeight, QFontMetrics(countFont()).height() + 4) };
}

void DragHandle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool selection = m_carries == Carries::Selection;
    const bool isPlain = Look::isHighContrast(palette());
    painter.setPen(Qt::NoPen);
    if (selection && isPlain)
        painter.setBrush(palette().highlight());
    else if (selection)
        painter.setBrush(Brand::gradient(rect(), layoutDirection()));
    else
        painter.setBrush(Look::faded(Look::secondary(palette()), 0.18));
    painter.drawRoundedRect(rect(), height() / 2.0, height() / 2.0);

    const QColor color = !selection ? Look::text(palette())
        : isPlain                   ? palette().color(QPalette::HighlightedText)
                                    : Brand::onGradient();
    const auto place = [&](int left, int width) {
        return QStyle::visualRect(layoutDirection(), rect(), QRect(left, 0, width, height()));
    };
    if (m_room == Room::Enough)
        m_symbols.paint(painter, Symbol::Documents, place(capsulePadding, qRound(documentsSize())),
                        documentsSize(), color);
    painter.setPen(color);
    painter.setFont(countFont());
    // The number reads from the left, also where the layout is mirrored.
    const int digit = digitWidth();
    QRect cell = place(capsulePadding + symbolWidth(), digit * static_cast<int>(m_count.size()));
    cell.setWidth(digit);
    for (const QChar c : m_count) {
        painter.drawText(cell, Qt::AlignCenter, c);
        cell.translate(digit, 0);
    }
}

void DragHandle::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_drag.mouseDown(event->scenePosition());
}

void DragHandle::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        m_drag.mouseDragged(event->scenePosition());
}

void DragHandle::mouseReleaseEvent(QMouseEvent *)
{
    m_drag.mouseUp();
}
