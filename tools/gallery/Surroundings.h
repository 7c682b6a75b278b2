#pragma once

#include "platform/DesktopLook.h"

#include <QPalette>
#include <QString>
#include <QStringList>

/// What the desktop decides about a picture.
struct Surroundings
{
    QString language = QStringLiteral("en");
    DesktopLook::Scheme scheme = DesktopLook::Scheme::Light;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    double textScale = 1;
    DesktopLook::Contrast contrast = DesktopLook::Contrast::Normal;

    /// For names of files: "dark", "light-rtl", "light-large", "dark-contrast".
    QString suffix() const;
};

namespace Gallery {

/// Before there is an application: no display, fonts of our own choice, and that
/// many device pixels a point.
void prepare(int ratio);
/// What the views take from the application rather than from an exhibit. No widget may exist.
void apply(const Surroundings &surroundings);

/// The folder with texts and icons.
QString resources();
/// Of all languages that there are texts in.
QStringList languages();

}
