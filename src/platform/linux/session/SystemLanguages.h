#pragma once

#include <QStringList>

namespace SystemLanguages {

/// The user's languages in order, as BCP 47 tags ("de-AT", "zh-TW"), from
/// the environment as gettext reads it. Empty where no language is set.
QStringList fromEnvironment();

}
