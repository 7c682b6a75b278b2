#include "platform/linux/x11/X11Keyboard.h"

#include "platform/linux/x11/Xcb.h"

#include <QKeyEvent>

namespace {

Modifiers modifiersOf(Qt::KeyboardModifiers held)
{
    const auto named
        = [held](auto key, Modifiers modifier) { return held.testFlag(key) ? modifier : 0; };
    return named(Qt::ShiftModifier, EventModifier::Shift)
        | named(Qt::MetaModifier, EventModifier::Control)
        | named(Qt::AltModifier, EventModifier::Option)
        | named(Qt::ControlModifier, EventModifier::Command);
}

}

KeyCodes::SymbolTable X11Keyboard::symbolTable(xcb_connection_t *connection)
{
    const auto *setup = xcb_get_setup(connection);
    const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto reply = Xcb::owned(xcb_get_keyboard_mapping_reply(
        connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count), nullptr));
    if (!reply)
        return {};
    const auto *symbols = xcb_get_keyboard_mapping_keysyms(reply.get());
    return { setup->min_keycode - KeyCodes::serverOffset,
             reply->keysyms_per_keycode,
             { symbols, symbols + xcb_get_keyboard_mapping_keysyms_length(reply.get()) } };
}

KeyEvent X11Keyboard::keyEvent(const QKeyEvent &event)
{
    const int evdev = static_cast<int>(event.nativeScanCode()) - KeyCodes::serverOffset;
    const auto shift = event.modifiers().testFlag(Qt::ShiftModifier) ? KeyCodes::ShiftKey::Down
                                                                     : KeyCodes::ShiftKey::Up;
    auto *connection = Xcb::toolkitConnection();
    const auto table = connection ? symbolTable(connection) : KeyCodes::SymbolTable();
    const int named = KeyCodes::fromSymbol(event.nativeVirtualKey());
    return { named == KeyCodes::none ? KeyCodes::fromEvdev(evdev) : named,
             modifiersOf(event.modifiers()), KeyCodes::characters(evdev, shift, table) };
}
