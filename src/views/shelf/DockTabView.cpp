#include "views/shelf/DockTabView.h"

#include "panel/DockTab.h"
#include "store/ShelfStore.h"
#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

constexpr double borderOpacity = 0.22; // As the panel's.
constexpr double chevronOpacity = 0.6;
constexpr QSizeF chevronSize(4.5, 15);
constexpr double chevronMiddle = 21; // From the top.
constexpr double chevronWidth = 2.4;
constexpr double countMiddle = 43;
constexpr double countSize = 10.5;
constexpr double countMargin = 2.5;

}

DockTabView::DockTabView(ShelfStore &store, DockTabModel &model, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
{
    setAccessibleRole(*this, QAccessible::Button, [this] {
        if (onPress)
            onPress();
    });
    m_itemsTicket = store.items.subscribe([this](const QList<ShelfItem> &items) {
        m_count = items.size();
        setAccessibleName(m_store.currentTitle());
        setAccessibleDescription(QString::number(m_count));
        update();
    });
    m_edgeTicket = model.edge.subscribe([this](DockEdge edge) {
        m_edge = edge;
        update();
    });
    resize(sizeHint());
}

void DockTabView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintShape(painter);
    paintChevron(painter);
    paintCount(painter);
}

/// A rounded rectangle that goes on beyond the edge, where the window cuts it.
void DockTabView::paintShape(QPainter &painter) const
{
    constexpr double radius = TabWindow::cornerRadius;
    constexpr double half = 0.5; // Of the border, which is one point wide.
    const bool isRight = m_edge == DockEdge::Right;
    const QRectF shape
        = QRectF(rect()).adjusted(isRight ? half : -radius, half, isRight ? radius : -half, -half);
    painter.setPen(QPen(Look::shade(palette(), borderOpacity), 1));
    painter.setBrush(palette().window());
    painter.drawRoundedRect(shape, radius - half, radius - half);
}

void DockTabView::paintChevron(QPainter &painter) const
{
    const double tip = m_edge == DockEdge::Right ? -chevronSize.width() / 2 //
                                                 : chevronSize.width() / 2;
    const double half = chevronSize.height() / 2;
    QPainterPath path({ -tip, -half });
    path.lineTo(tip, 0);
    path.lineTo(-tip, half);
    path.translate(width() / 2.0, chevronMiddle);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Look::shade(palette(), chevronOpacity), chevronWidth, Qt::SolidLine,
                        Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
}

/// A number that is too wide for the tab is made narrower.
void DockTabView::paintCount(QPainter &painter) const
{
    const QString text = QString::number(m_count);
    const QFont font = Look::font(this->font(), countSize, QFont::Bold);
    const QFontMetricsF metrics(font);
    const double needed = metrics.horizontalAdvance(text);
    const double fit = std::min(1.0, (width() - 2 * countMargin) / needed);
    painter.setFont(font);
    painter.setPen(Look::text(palette()));
    painter.translate(width() / 2.0, countMiddle);
    painter.scale(fit, fit);
    painter.drawText(QPointF(-needed / 2, metrics.capHeight() / 2), text);
}
