#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPalette>
#include <QTransform>

#include <algorithm>
#include <cstdlib>

/// Shades and sizes that all views share, derived from what the desktop gives.
namespace Look {

inline QColor faded(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
    return color;
}

/// That share of one opaque colour over the other.
inline QColor blended(const QColor &over, const QColor &under, double share)
{
    const auto mix
        = [share](int one, int other) { return qRound(one * share + other * (1 - share)); };
    return { mix(over.red(), under.red()), mix(over.green(), under.green()),
             mix(over.blue(), under.blue()) };
}

inline QColor text(const QPalette &palette)
{
    return palette.color(QPalette::WindowText);
}

/// Whether the palette is one for who needs all the contrast that there is.
inline bool isHighContrast(const QPalette &palette)
{
    return std::abs(text(palette).lightness() - palette.color(QPalette::Window).lightness()) > 248;
}

/// The text's colour at that opacity, for lines and soft fills; clearer at high contrast.
inline QColor shade(const QPalette &palette, double opacity)
{
    return faded(text(palette), isHighContrast(palette) ? std::min(1.0, 4 * opacity) : opacity);
}

/// For what comes second: still five to one against the window in common palettes.
inline QColor secondary(const QPalette &palette)
{
    return shade(palette, 0.66);
}

/// For drawText(): the layout's leading edge, whichever way the text itself reads.
inline int leading(Qt::LayoutDirection direction)
{
    return static_cast<int>(Qt::AlignAbsolute
                            | (direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft));
}

/// Device pixels in a point, also where a widget paints into a picture.
inline double pixelRatio(const QPainter &painter)
{
    return painter.deviceTransform().m11();
}

/// What the desktop's user multiplies the sizes of all texts by; DesktopStyle sets it, and
/// the application's font with it.
inline double textScale = 1;

/// A font whose size is given in units of 1/72 inch on a desktop of 72 dots per inch.
inline QFont font(const QFont &base, double size, QFont::Weight weight = QFont::Normal)
{
    QFont result = base;
    result.setPointSizeF(size * 0.75 * textScale);
    result.setWeight(weight);
    return result;
}

}
