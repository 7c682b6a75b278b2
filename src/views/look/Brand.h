#pragma once

#include "views/look/Look.h"

#include <QColor>
#include <QLinearGradient>
#include <QRectF>

#include <algorithm>
#include <array>

/// The program's own colours, in sRGB; everything else comes from the palette.
namespace Brand {

inline const QColor top = QColor::fromRgbF(1.0f, 0.667f, 0.314f);
inline const QColor bottom = QColor::fromRgbF(0.941f, 0.29f, 0.439f);
inline const QColor accent = QColor::fromRgbF(0.957f, 0.439f, 0.361f);

/// For mock-ups of entries.
inline const std::array<QColor, 4> tints {
    QColor::fromRgbF(0.957f, 0.439f, 0.361f),
    QColor::fromRgbF(0.333f, 0.584f, 0.976f),
    QColor::fromRgbF(0.239f, 0.698f, 0.525f),
    QColor::fromRgbF(0.588f, 0.435f, 0.937f),
};

/// From the top leading to the bottom trailing corner of that rectangle.
inline QLinearGradient gradient(const QRectF &rect, Qt::LayoutDirection direction)
{
    const bool mirrored = direction == Qt::RightToLeft;
    QLinearGradient result(mirrored ? rect.topRight() : rect.topLeft(),
                           mirrored ? rect.bottomLeft() : rect.bottomRight());
    result.setColorAt(0, top);
    result.setColorAt(1, bottom);
    return result;
}

/// Of texts on the gradient: black or white, whichever can be read better where it is worse.
inline QColor onGradient()
{
    const auto least = [](const QColor &color) {
        return std::min(Look::contrast(color, top), Look::contrast(color, bottom));
    };
    return least(Qt::white) > least(Qt::black) ? Qt::white : Qt::black;
}

/// The gradient for lines, where its colours can be told from what they lie on; else, and at
/// high contrast, nearer to the text's.
inline QLinearGradient line(const QRectF &rect, Qt::LayoutDirection direction,
                            const QPalette &palette)
{
    QLinearGradient result = gradient(rect, direction);
    const bool isPlain = Look::isHighContrast(palette);
    result.setColorAt(0, isPlain ? Look::ring(palette) : Look::distinct(palette, top));
    result.setColorAt(1, isPlain ? Look::ring(palette) : Look::distinct(palette, bottom));
    return result;
}

}
