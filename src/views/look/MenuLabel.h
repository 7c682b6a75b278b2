#pragma once

#include <QString>

/// A name that is the user's or another program's, as a menu shows it unchanged.
/// In a label "&" would mark a key, and a tab a column.
QString menuLabel(QString name);
