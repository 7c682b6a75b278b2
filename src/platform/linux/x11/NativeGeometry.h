#pragma once

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QRectF>

/// Pixels of the X server against points of the virtual desktop. A screen keeps
/// its native top-left corner in points too, and only what lies inside it is
/// divided by its pixel ratio; so the scale of a place depends on its screen.
namespace NativeGeometry {

struct ScreenScale
{
    QRect native; // Pixels.
    double ratio; // Pixels a point.
};

/// The toolkit's screens, the primary one first.
QList<ScreenScale> screenScales();

/// Outside of all screens the nearest one's scale holds.
QPointF toPoints(const QPointF &native, const QList<ScreenScale> &scales);
QPointF toNative(const QPointF &points, const QList<ScreenScale> &scales);
/// The rectangle as it lies on that screen.
QRectF toPoints(const QRectF &native, const ScreenScale &scale);

}
