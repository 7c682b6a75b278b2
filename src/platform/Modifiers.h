#pragma once

#include <QtGlobal>

/// Modifier keys as bits. Two numberings exist side by side because settings
/// store the second: events and gestures use EventModifier, the stored hot key
/// uses HotKeyModifier. On this desktop Command is Ctrl, Option is Alt, Control
/// is Super and Shift is Shift.
using Modifiers = quint64;

namespace EventModifier {
inline constexpr Modifiers Shift = 0x20000;
inline constexpr Modifiers Control = 0x40000;
inline constexpr Modifiers Option = 0x80000;
inline constexpr Modifiers Command = 0x100000;
inline constexpr Modifiers All = 0x1E0000;
}

namespace HotKeyModifier {
inline constexpr int Command = 0x100;
inline constexpr int Shift = 0x200;
inline constexpr int Option = 0x800;
inline constexpr int Control = 0x1000;
}
