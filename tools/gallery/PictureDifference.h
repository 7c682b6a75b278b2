#pragma once

#include <QImage>

/// How far apart two pictures are for the eye: the distance in CIE L*a*b* (1976)
/// of what is left after a slight blur, which takes the grain of smoothed edges away.
struct PictureDifference
{
    PictureDifference(const QImage &one, const QImage &other);

    /// Tolerances. A distance of 2.3 is what one can just tell apart.
    static constexpr double mostMean = 0.08;
    static constexpr double clearDistance = 4;
    static constexpr double mostClear = 0.0005; // Share of pixels that are farther apart.

    bool isSmall() const { return mean <= mostMean && clear <= mostClear; }

    double mean = 1000; // Where the sizes differ.
    double clear = 1;
    QImage map; // White where equal, the darker the farther apart.
};
