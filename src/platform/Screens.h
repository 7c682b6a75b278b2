#pragma once

#include <QList>
#include <QRectF>

#include <optional>

/// One monitor, in points of the virtual desktop, y downwards.
struct Screen
{
    QRectF frame;
    QRectF visibleFrame; // Without panels and docks.
};

class Screens
{
public:
    virtual ~Screens() = default;
    virtual QList<Screen> all() const = 0; // In the desktop's order.
    virtual std::optional<Screen> main() const = 0; // The primary one.
};
