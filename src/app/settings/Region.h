#pragma once

#include <QLocale>

class QDateTime;

/// How the user's region writes times and numbers (LC_ALL, LC_TIME, LC_NUMERIC, LANG), while
/// words are in the chosen language. Where no region is set, the language's own way.
namespace Region {

/// Date and time, short.
QString dateTime(const QDateTime &time, const QString &language);

/// A text with one number and no other point, as that language has it, with the region's.
QString withRegionsPoint(QString text, const QLocale &language);

}
