#include "gallery/Surroundings.h"

#include "app/settings/Localizer.h"
#include "views/look/DesktopStyle.h"
#include "views/look/Look.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>

using Scheme = DesktopLook::Scheme;

QString Surroundings::suffix() const
{
    QString result = scheme == Scheme::Dark ? QStringLiteral("dark") : QStringLiteral("light");
    if (direction == Qt::RightToLeft)
        result += QStringLiteral("-rtl");
    if (textScale > 1)
        result += QStringLiteral("-large");
    if (contrast == DesktopLook::Contrast::High)
        result += QStringLiteral("-contrast");
    return result;
}

namespace Gallery {

void prepare(int ratio)
{
    // A screen that no window is too large for, also with large texts and two pixels a point.
    qputenv("QT_QPA_PLATFORM",
            "offscreen:configfile=" VANTLE_SOURCE_DIR "/tools/gallery/screen.json");
    qputenv("FONTCONFIG_FILE", VANTLE_SOURCE_DIR "/tools/gallery/fonts.conf");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("TZ", "UTC");
    qputenv("QT_SCALE_FACTOR", QByteArray::number(ratio));
    for (const char *name :
         { "QT_FONT_DPI", "QT_SCREEN_SCALE_FACTORS", "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME" })
        qunsetenv(name);
}

void apply(const Surroundings &surroundings)
{
    static bool isFirst = true;
    if (std::exchange(isFirst, false)) {
        QApplication::setStyle(QStringLiteral("Fusion"));
        QIcon::setThemeSearchPaths({ QStringLiteral("/usr/share/icons") });
    }
    QLocale::setDefault(QLocale(surroundings.language));
    QIcon::setThemeName(surroundings.scheme == Scheme::Dark ? QStringLiteral("breeze-dark")
                                                            : QStringLiteral("breeze"));
    QApplication::setPalette(DesktopStyle::palette(surroundings.scheme, surroundings.contrast));
    QApplication::setLayoutDirection(surroundings.direction);
    Look::textScale = surroundings.textScale;
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(10 * surroundings.textScale);
    QApplication::setFont(font);
}

QString resources()
{
    return QStringLiteral(VANTLE_SOURCE_DIR "/src/resources");
}

QStringList languages()
{
    return Localizer(Localizer::findBundle({ resources() }).value_or(QString()), {}).codes();
}

}
