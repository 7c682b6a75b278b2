#include "platform/linux/x11/DragPicture.h"

#include <QBitmap>
#include <QPainter>

DragPicture::DragPicture(const QList<DraggingItem> &items, const QPointF &at, qreal ratio,
                         Backdrop backdrop)
{
    QRectF bounds;
    for (const DraggingItem &item : items) {
        if (!item.icon.isNull())
            bounds |= item.frame;
    }
    const QSize size = bounds.isEmpty() ? QSize(1, 1) : bounds.size().toSize();
    m_pixmap = QPixmap(size * ratio);
    m_pixmap.setDevicePixelRatio(ratio);
    m_pixmap.fill(Qt::transparent);
    QPainter painter(&m_pixmap);
    for (auto i = items.size(); i-- > 0;) { // The first on top.
        const DraggingItem &item = items.at(i);
        if (!item.icon.isNull())
            item.icon.paint(&painter, item.frame.translated(-bounds.topLeft()).toRect());
    }
    painter.end();
    m_hotSpot = (at - bounds.topLeft()).toPoint();

    setFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint
             | Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus);
    if (backdrop == Backdrop::Translucent) {
        QSurfaceFormat translucent = format();
        translucent.setAlphaBufferSize(8);
        setFormat(translucent);
    }
    resize(size);
    // Without a compositing manager a rectangle would show. The server finds a window even
    // where it takes no input, so there is none where the pointer is.
    QRegion shape(QRect(QPoint(), size));
    if (backdrop == Backdrop::Opaque && !bounds.isEmpty())
        shape = m_pixmap.scaled(size).mask();
    setMask(shape - QRect(m_hotSpot - QPoint(2, 2), QSize(5, 5)));
}

void DragPicture::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawPixmap(0, 0, m_pixmap);
}
