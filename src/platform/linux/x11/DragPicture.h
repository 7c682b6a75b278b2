#pragma once

#include "platform/DragSession.h"

#include <QPixmap>
#include <QRasterWindow>

/// The window of what is dragged, which follows the pointer and holds it: all its
/// moves and its release come here. Targets are looked for through the hole in it below the
/// pointer.
class DragPicture final : public QRasterWindow
{
public:
    enum class Backdrop { Translucent, Opaque };

    /// at: the pointer, in points of the window from which the items are dragged.
    DragPicture(const QList<DraggingItem> &items, const QPointF &at, qreal ratio,
                Backdrop backdrop);

    /// The pointer, in points of the screen.
    void follow(const QPointF &pointer) { setPosition(pointer.toPoint() - m_hotSpot); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QPixmap m_pixmap;
    QPoint m_hotSpot;
};
