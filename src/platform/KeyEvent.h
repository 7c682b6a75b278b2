#pragma once

#include "platform/Modifiers.h"

#include <QString>

/// One key press in a window of ours.
struct KeyEvent
{
    int keyCode = -1; // Virtual key code: a physical key, whatever the layout; -1 when it has none.
    Modifiers modifiers = 0; // EventModifier bits.
    QString characters; // In lower case, of the first Latin layout, as if only Shift were held.
};
