#include "platform/linux/LookSources.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double smallestText = 0.5;
constexpr double largestText = 3;

using Scheme = DesktopLook::Scheme;

Scheme schemeOf(const LookSources &sources, const QString &theme)
{
    // 0 is no preference: https://flatpak.github.io/xdg-desktop-portal, "color-scheme".
    switch (
        sources.portal.value(QStringLiteral("org.freedesktop.appearance color-scheme")).toUInt()) {
    case 1:
        return Scheme::Dark;
    case 2:
        return Scheme::Light;
    default:
        break;
    }
    if (theme.isEmpty())
        return Scheme::NoPreference;
    const bool isDark = theme.contains(QLatin1String("dark"), Qt::CaseInsensitive)
        || theme.contains(QLatin1String("inverse"), Qt::CaseInsensitive);
    return isDark ? Scheme::Dark : Scheme::NoPreference;
}

/// A settings manager that gives a resolution has the user's factor in it, and the toolkit
/// scales everything by that, also at run time.
double textScaleOf(const LookSources &sources)
{
    if (sources.xsettings.value("Xft/DPI").toInt() > 0)
        return 1;
    const double scale
        = sources.portal
              .value(QStringLiteral("org.gnome.desktop.interface text-scaling-factor"), 1.0)
              .toDouble();
    return std::isfinite(scale) && scale > 0 ? std::clamp(scale, smallestText, largestText) : 1;
}

}

DesktopLook LookSources::look() const
{
    const auto isOn = [this](const char *key) { return portal.value(QLatin1String(key)).toBool(); };
    const QString theme = xsettings.value("Net/ThemeName").toString();
    DesktopLook look;
    look.scheme = schemeOf(*this, theme);
    if (isOn("org.freedesktop.appearance contrast")
        || isOn("org.gnome.desktop.a11y.interface high-contrast")
        || theme.startsWith(QLatin1String("HighContrast")))
        look.contrast = DesktopLook::Contrast::High;
    if (isOn("org.freedesktop.appearance reduced-motion")
        || !portal.value(QStringLiteral("org.gnome.desktop.interface enable-animations"), true)
                .toBool()
        || xsettings.value("Gtk/EnableAnimations", 1).toInt() == 0)
        look.motion = Motion::Reduced;
    look.textScale = textScaleOf(*this);
    return look;
}
