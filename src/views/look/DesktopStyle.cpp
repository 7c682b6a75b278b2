#include "views/look/DesktopStyle.h"

#include "views/look/Look.h"

#include <QApplication>
#include <QToolTip>

namespace {

using Scheme = DesktopLook::Scheme;
using Contrast = DesktopLook::Contrast;

struct Shades
{
    QRgb window;
    QRgb base;
    QRgb button;
    QRgb text;
    QRgb highlight;
    QRgb highlightedText;
    QRgb link;
    double quiet; // Opacity of text that is disabled or a placeholder.
};

constexpr Shades light { 0xfff1f1f3, 0xffffffff, 0xfff6f6f8, 0xff1d1d20,
                         0xff1d70b8, 0xffffffff, 0xff1762a6, 0.5 };
constexpr Shades dark { 0xff2b2c30, 0xff222326, 0xff3a3b40, 0xfff2f2f4,
                        0xff277abe, 0xffffffff, 0xff6cb8f0, 0.5 };
constexpr Shades lightContrast { 0xffffffff, 0xffffffff, 0xfff0f0f0, 0xff000000,
                                 0xff0037da, 0xffffffff, 0xff0000c0, 0.7 };
// The style draws frames darker than the window, which black hides: fields and buttons stand
// out by their fill.
constexpr Shades darkContrast { 0xff000000, 0xff1c1c1c, 0xff3c3c3c, 0xffffffff,
                                0xffffe000, 0xff000000, 0xff8fd0ff, 0.7 };

const Shades &shadesOf(Scheme scheme, Contrast contrast)
{
    if (scheme == Scheme::Dark)
        return contrast == Contrast::High ? darkContrast : dark;
    return contrast == Contrast::High ? lightContrast : light;
}

/// None where the toolkit's own palette is what is wanted. (A QPalette that holds nothing
/// equals the application's of the moment, so it could not tell.)
std::optional<QPalette> paletteFor(const DesktopLook &look)
{
    const bool isAsked = look.scheme != Scheme::NoPreference || look.contrast != Contrast::Normal;
    if (look.colours == DesktopLook::Colours::Toolkit || !isAsked)
        return {};
    return DesktopStyle::palette(look.scheme, look.contrast);
}

}

QPalette DesktopStyle::palette(Scheme scheme, Contrast contrast)
{
    const Shades &shades = shadesOf(scheme, contrast);
    const QColor window(shades.window);
    const QColor base(shades.base);
    const QColor text(shades.text);
    QPalette result(QColor(shades.button), window);
    for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                             QPalette::ToolTipText, QPalette::BrightText }) {
        result.setColor(role, text);
        result.setColor(QPalette::Disabled, role, Look::blended(text, window, shades.quiet));
    }
    result.setColor(QPalette::Base, base);
    result.setColor(QPalette::AlternateBase, Look::blended(text, base, 0.04));
    result.setColor(QPalette::ToolTipBase, base);
    result.setColor(QPalette::PlaceholderText, Look::faded(text, shades.quiet + 0.15));
    result.setColor(QPalette::Highlight, shades.highlight);
    result.setColor(QPalette::Disabled, QPalette::Highlight, Look::blended(text, window, 0.3));
    result.setColor(QPalette::HighlightedText, shades.highlightedText);
    result.setColor(QPalette::Link, shades.link);
    result.setColor(QPalette::LinkVisited, shades.link);
    return result;
}

void DesktopStyle::apply(const DesktopLook &look)
{
    if (look.textScale != m_applied.textScale) {
        if (!m_font)
            m_font = QApplication::font();
        Look::textScale = look.textScale;
        QFont scaled = *m_font;
        scaled.setPointSizeF(scaled.pointSizeF() * look.textScale);
        QApplication::setFont(scaled);
        QToolTip::setFont(scaled);
    }
    const auto next = paletteFor(look);
    if (next != paletteFor(m_applied)) {
        QApplication::setPalette(next.value_or(QPalette()));
        QToolTip::setPalette(QApplication::palette());
    }
    m_applied = look;
}
