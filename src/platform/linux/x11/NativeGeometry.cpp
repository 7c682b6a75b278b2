#include "platform/linux/x11/NativeGeometry.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace {

QRectF inPoints(const NativeGeometry::ScreenScale &scale)
{
    return { scale.native.topLeft(), QSizeF(scale.native.size()) / scale.ratio };
}

/// 0 inside, else the squared distance; a frame's right and lower edge lie outside.
double distance(const QRectF &frame, const QPointF &point)
{
    const double x = std::max({ frame.left() - point.x(), 0.0, point.x() - frame.right() });
    const double y = std::max({ frame.top() - point.y(), 0.0, point.y() - frame.bottom() });
    const bool onEdge = point.x() == frame.right() || point.y() == frame.bottom();
    return x * x + y * y + (onEdge ? 1e-6 : 0);
}

template<typename Frame>
const NativeGeometry::ScreenScale *nearest(const QList<NativeGeometry::ScreenScale> &scales,
                                           const QPointF &point, Frame frame)
{
    const auto found
        = std::min_element(scales.begin(), scales.end(), [&](const auto &one, const auto &other) {
              return distance(frame(one), point) < distance(frame(other), point);
          });
    return found == scales.end() ? nullptr : &*found;
}

}

QList<NativeGeometry::ScreenScale> NativeGeometry::screenScales()
{
    QList<ScreenScale> scales;
    for (const QScreen *screen : QGuiApplication::screens()) {
        const QRect points = screen->geometry();
        const double ratio = screen->devicePixelRatio();
        const QSizeF native = QSizeF(points.size()) * ratio;
        scales.append({ QRect(points.topLeft(), native.toSize()), ratio });
    }
    return scales;
}

QPointF NativeGeometry::toPoints(const QPointF &native, const QList<ScreenScale> &scales)
{
    const auto *scale
        = nearest(scales, native, [](const ScreenScale &each) { return QRectF(each.native); });
    if (!scale)
        return native;
    const QPointF origin = scale->native.topLeft();
    return origin + (native - origin) / scale->ratio;
}

QPointF NativeGeometry::toNative(const QPointF &points, const QList<ScreenScale> &scales)
{
    const auto *scale = nearest(scales, points, inPoints);
    if (!scale)
        return points;
    const QPointF origin = scale->native.topLeft();
    return origin + (points - origin) * scale->ratio;
}

QRectF NativeGeometry::toPoints(const QRectF &native, const ScreenScale &scale)
{
    const QPointF origin = scale.native.topLeft();
    return { origin + (native.topLeft() - origin) / scale.ratio, native.size() / scale.ratio };
}
