#pragma once

#include <functional>

/// One key combination that reaches the program whichever application has the
/// keyboard, and reaches nobody else. Main thread.
class HotKey
{
public:
    virtual ~HotKey() = default;

    /// keyCode: a virtual key code. modifiers: HotKeyModifier bits. False where
    /// another program has the combination or the keyboard lacks the key; nothing
    /// is bound then. What is bound must be unbound first.
    virtual bool bind(int keyCode, int modifiers) = 0;
    virtual void unbind() = 0;

    /// Once for each press, however long it lasts.
    std::function<void()> onPress;
};
