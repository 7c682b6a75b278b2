#pragma once

#include <QHash>
#include <QString>
#include <QVariant>

/// The two text formats of the string tables.
namespace StringTable {

/// Reads lines of the form "key" = "value"; with comments as in C and the escapes
/// \" \\ \n \r \t and \U or \u with four hexadecimal digits. Reading ends at the
/// first fault, and what stands before it counts.
QHash<QString, QString> parse(const QString &text);

/// Puts arguments into a format that knows %@, %lld, %d, %% and positions
/// ("%2$@"). No argument is ever read that is not there or does not fit: such a
/// conversion stays in the text.
QString format(const QString &text, const QVariantList &arguments);

}
