#pragma once

#include <QString>

class Localizer;

/// A key combination as settings name it ("⌥⌘S"), spelled as this desktop's
/// users read it in their language ("Ctrl+Alt+S").
QString shortcutText(const QString &label, const Localizer &texts);
