#pragma once

#include <QList>
#include <QRectF>

#include <functional>
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

    bool operator==(const Screen &) const = default;
};

class Screens
{
public:
    virtual ~Screens() = default;
    virtual QList<Screen> all() const = 0; // In the desktop's order.
    virtual std::optional<Screen> main() const = 0; // The primary one.

    /// A screen or its visible frame has changed, come or gone; called from the event loop.
    std::function<void()> onChanged;

    /// The screen that shows most of that frame; none if it lies on no screen.
    std::optional<Screen> showing(const QRectF &place) const
    {
        std::optional<Screen> best;
        double most = 0;
        for (const Screen &screen : all()) {
            const QRectF common = screen.visibleFrame & place;
            const double area = common.width() * common.height();
            if (area > most) {
                most = area;
                best = screen;
            }
        }
        return best;
    }
};
