#pragma once

#include <QRegion>

/// A rectangle with round corners, for windows that no compositor makes
/// translucent. Its steps are whole pixels.
QRegion roundedRegion(const QRect &rect, int radius);
