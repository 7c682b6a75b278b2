#pragma once

#include <QString>

/// Writes pictures of the settings, from top to bottom, and of the list of
/// applications, at one and two pixels a point; scheme is part of their names.
void shootSettings(const QString &resources, const QString &folder, const QString &scheme);
