#include "panel/HotKeyCenter.h"

#include "platform/HotKey.h"

HotKeyCenter::HotKeyCenter(HotKey &hotKey)
    : m_hotKey(hotKey)
{
    m_hotKey.onPress = [this] { onTrigger(); };
}

HotKeyCenter::~HotKeyCenter()
{
    m_hotKey.onPress = nullptr;
}

bool HotKeyCenter::registerHotKey(int code, int modifiers)
{
    if (m_isRegistered)
        m_hotKey.unbind();
    m_isRegistered = m_hotKey.bind(code, modifiers);
    return m_isRegistered;
}

int HotKeyCenter::carbonModifiers(Modifiers flags)
{
    int modifiers = 0;
    if ((flags & EventModifier::Command) != 0)
        modifiers |= HotKeyModifier::Command;
    if ((flags & EventModifier::Shift) != 0)
        modifiers |= HotKeyModifier::Shift;
    if ((flags & EventModifier::Option) != 0)
        modifiers |= HotKeyModifier::Option;
    if ((flags & EventModifier::Control) != 0)
        modifiers |= HotKeyModifier::Control;
    return modifiers;
}
