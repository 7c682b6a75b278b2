#pragma once

#include <QList>
#include <QRectF>

#include <optional>

/// One monitor, in points of the virtual desktop, y downwards.
struct Screen
{
    QRectF frame;
    QRectF visibleFrame; // Without panels and docks.

    /// Unlike QRectF::contains, a point between two screens is on one of them only.
    bool holds(const QPointF &point) const
    {
        return frame.left() <= point.x() && point.x() < frame.right() && frame.top() <= point.y()
            && point.y() < frame.bottom();
    }
};

class Screens
{
public:
    virtual ~Screens() = default;
    virtual QList<Screen> all() const = 0; // In the desktop's order.
    virtual std::optional<Screen> main() const = 0; // The primary one.
};
