#pragma once

#include <QString>

/// Characters as people count them: an emoji of several parts, or a letter with
/// its accents, is one.
namespace Characters {

QString first(const QString &text, qsizetype count);

}
