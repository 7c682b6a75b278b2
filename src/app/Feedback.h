#pragma once

#include <QString>
#include <QUrl>

/// Where the web site takes feedback, in that language. version: what is told to
/// the site about the program. Not valid where the site's address is not.
QUrl feedbackAddress(const QString &site, const QString &languageCode, const QString &version);
