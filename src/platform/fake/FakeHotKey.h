#pragma once

#include "platform/HotKey.h"

#include <QSet>

#include <utility>

class FakeHotKey final : public HotKey
{
public:
    using Combination = std::pair<int, int>; // Virtual key code, HotKeyModifier bits.

    bool bind(int keyCode, int modifiers) override
    {
        const Combination wanted(keyCode, modifiers);
        if (taken.contains(wanted))
            return false;
        bound.insert(wanted);
        return true;
    }
    void unbind() override { bound.clear(); }
    void press(int keyCode, int modifiers) const
    {
        if (bound.contains(Combination(keyCode, modifiers)) && onPress)
            onPress();
    }

    QSet<Combination> bound; // More than one if the program forgot to unbind.
    QSet<Combination> taken; // By other programs.
};
