#pragma once

#include <QString>

#include <cstdint>
#include <vector>

/// Keys of the kernel's input layer (evdev codes) and the virtual key codes that
/// settings and key commands use. Both name a physical key, whatever is printed
/// on it; modifiers follow their role: Ctrl is Command, Alt is Option, Super is
/// Control.
namespace KeyCodes {

inline constexpr int none = -1;

/// X servers with evdev drivers number keys 8 higher than the kernel.
inline constexpr int serverOffset = 8;

int fromEvdev(int evdevCode); // none for a key without a virtual code.
int toEvdev(int keyCode);

// The same for X key symbols, of the keys that do not type: these are where the keyboard's map
// puts them, also on servers whose numbers of keys are not the kernel's. none for all others.
int fromSymbol(uint32_t symbol);
uint32_t toSymbol(int keyCode); // 0 for all others.

/// What the keyboard types: one row a key, `width` columns with the X key symbols
/// of its layouts' shift levels. An unshifted column is followed by its shifted one.
struct SymbolTable
{
    int firstEvdevCode = 0;
    int width = 0;
    std::vector<uint32_t> symbols;
};

enum class ShiftKey { Up, Down };

/// What the key types in the keyboard's first Latin layout, in lower case; empty
/// if nothing. A keyboard without one counts as a US one. An unshifted key of
/// the digit row types its digit everywhere, also where the layout wants Shift
/// for it.
QString characters(int evdevCode, ShiftKey shift, const SymbolTable &table);

}
