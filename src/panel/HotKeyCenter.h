#pragma once

#include "platform/Modifiers.h"

#include <functional>

class HotKey;

/// The one global hot key: what is registered, and what its press does.
class HotKeyCenter
{
public:
    explicit HotKeyCenter(HotKey &hotKey);
    ~HotKeyCenter();
    HotKeyCenter(const HotKeyCenter &) = delete;
    HotKeyCenter &operator=(const HotKeyCenter &) = delete;

    std::function<void()> onTrigger = [] {};

    /// code: a virtual key code. modifiers: HotKeyModifier bits. Whether the
    /// desktop took it. The key before is given up first, also if it did not.
    bool registerHotKey(int code, int modifiers);

    /// The HotKeyModifier bits of EventModifier bits.
    static int carbonModifiers(Modifiers flags);

private:
    HotKey &m_hotKey;
    bool m_isRegistered = false;
};
