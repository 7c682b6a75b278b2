#pragma once

#include <QString>

/// Writes pictures of the tour's pages, in English, German and Japanese, from right
/// to left and with large text, at one and two pixels a point; scheme is part of
/// their names.
void shootWelcome(const QString &resources, const QString &folder, const QString &scheme);
/// The same of the window that tells what the program is.
void shootAbout(const QString &resources, const QString &folder, const QString &scheme);
