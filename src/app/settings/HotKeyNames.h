#pragma once

#include <QString>

/// The names of key combinations as settings store them. What the user reads is
/// spelled from them by shortcutText().
namespace HotKeyNames {

/// code: a virtual key code. modifiers: HotKeyModifier bits. characters: what
/// the key types, empty if nothing.
QString label(int code, int modifiers, const QString &characters);
QString keyName(int code, const QString &characters);

}
