#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QPalette>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
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

/// The fill of a card that groups what belongs together.
inline QColor card(const QPalette &palette)
{
    const QColor window = palette.color(QPalette::Window);
    const QColor base = palette.color(QPalette::Base);
    return base.lightness() > window.lightness() ? base : blended(text(palette), window, 0.06);
}

/// How much of the highlight's colour lies over the window where a row is selected.
constexpr double selected = 0.2;

/// By the Web Content Accessibility Guidelines, 1 to 21.
inline double contrast(const QColor &one, const QColor &other)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](double c) {
            return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
            + 0.0722 * linear(color.blueF());
    };
    const auto [low, high] = std::minmax({ luminance(one), luminance(other) });
    return (high + 0.05) / (low + 0.05);
}

/// On what the palette's user meets texts and marks: window, fields, cards and selected rows.
inline std::array<QColor, 4> grounds(const QPalette &palette)
{
    const QColor window = palette.color(QPalette::Window);
    return { window, palette.color(QPalette::Base), card(palette),
             blended(palette.color(QPalette::Highlight), window, selected) };
}

/// For what comes second: the text's colour, as soft as it can be read on every ground.
inline QColor secondary(const QPalette &palette)
{
    constexpr double least = 4.5; // What the guidelines ask of text.
    for (double opacity = 0.66; opacity < 1; opacity += 0.02) {
        const QColor candidate = shade(palette, opacity);
        if (std::ranges::all_of(grounds(palette), [&](const QColor &ground) {
                return contrast(blended(candidate, ground, candidate.alphaF()), ground) >= least;
            }))
            return candidate;
    }
    return text(palette);
}

/// That colour, nearer to the text's where it needs that to be told from every ground.
inline QColor distinct(const QPalette &palette, const QColor &color)
{
    constexpr double least = 3; // What the guidelines ask of what is not text.
    const auto isDistinct = [grounds = grounds(palette)](const QColor &candidate) {
        return std::ranges::all_of(
            grounds, [&](const QColor &ground) { return contrast(candidate, ground) >= least; });
    };
    for (double share = 0; share < 1; share += 0.05) {
        const QColor candidate = blended(text(palette), color, share);
        if (isDistinct(candidate))
            return candidate;
    }
    return text(palette);
}

/// Of rings that show the keyboard, and round what is selected.
inline QColor ring(const QPalette &palette)
{
    return distinct(palette, palette.color(QPalette::Highlight));
}

/// Of what is there but not chosen: the border of a switch that is off, the dot of a page.
inline QColor edge(const QPalette &palette)
{
    return distinct(
        palette,
        blended(text(palette), palette.color(QPalette::Window), isHighContrast(palette) ? 1 : 0.4));
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

/// Of symbols in buttons: a narrow panel still needs most of its width for texts.
inline double symbolScale()
{
    return std::min(textScale, 1.5);
}

/// A font whose size is given in units of 1/72 inch on a desktop of 72 dots per inch.
inline QFont font(const QFont &base, double size, QFont::Weight weight = QFont::Normal)
{
    QFont result = base;
    result.setPointSizeF(size * 0.75 * textScale);
    result.setWeight(weight);
    return result;
}

}
