#pragma once

#include <QString>

/// A key combination as settings name it ("⌥⌘S"), spelled as this desktop's
/// users read it ("Ctrl+Alt+S").
QString shortcutText(const QString &label);
