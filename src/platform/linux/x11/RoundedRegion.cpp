#include "platform/linux/x11/RoundedRegion.h"

#include <cmath>

/// Row by row, because a region made of a path has corners of a few long edges.
QRegion roundedRegion(const QRect &rect, int radius)
{
    QRegion region(rect.adjusted(0, radius, 0, -radius));
    for (int row = 0; row < radius; ++row) {
        const double up = radius - row - 0.5; // From the row's middle to the arc's centre.
        const int inset = qRound(radius - std::sqrt(radius * radius - up * up));
        const QRect strip(rect.left() + inset, rect.top() + row, rect.width() - 2 * inset, 1);
        region += strip;
        region += strip.translated(0, rect.height() - 1 - 2 * row);
    }
    return region;
}
