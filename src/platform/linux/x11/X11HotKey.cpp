#include "platform/linux/x11/X11HotKey.h"

#include "platform/linux/windows/KeyCodes.h"
#include "platform/linux/x11/ModifierBits.h"
#include "platform/linux/x11/X11Keyboard.h"

#include <QtGlobal>

#include <utility>

namespace {

template<typename Action>
void forEachRoot(xcb_connection_t *connection, Action action)
{
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(connection)); it.rem > 0;
         xcb_screen_next(&it))
        action(it.data->root);
}

}

X11HotKey::X11HotKey(WatchConnection &connection)
    : m_connection(connection)
{
    connection.addEventHandler([this](const auto &event) { handleEvent(event); });
}

bool X11HotKey::bind(int keyCode, int modifiers)
{
    Q_ASSERT(!m_bound);
    const int evdevCode = m_connection.isUsable() ? evdevCodeOf(keyCode) : KeyCodes::none;
    if (evdevCode == KeyCodes::none)
        return false;
    m_bound = { static_cast<xcb_keycode_t>(evdevCode + KeyCodes::serverOffset), modifiers };
    if (!grab(wantedStates()))
        m_bound.reset();
    return m_bound.has_value();
}

/// By the keyboard's map, where that has the key.
int X11HotKey::evdevCodeOf(int keyCode) const
{
    if (const uint32_t symbol = KeyCodes::toSymbol(keyCode)) {
        const auto table = X11Keyboard::symbolTable(m_connection.xcb());
        for (size_t at = 0; at < table.symbols.size(); at += static_cast<size_t>(table.width)) {
            if (table.symbols[at] == symbol)
                return table.firstEvdevCode + static_cast<int>(at) / table.width;
        }
    }
    return KeyCodes::toEvdev(keyCode);
}

void X11HotKey::unbind()
{
    release(m_states);
    m_states.clear();
    m_bound.reset();
}

/// Events that another client sent do not count: whoever may press keys asks the
/// X server for it.
void X11HotKey::handleEvent(const xcb_generic_event_t &event)
{
    switch (event.response_type) {
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        handleKey(reinterpret_cast<const xcb_key_press_event_t &>(event));
        break;
    case XCB_MAPPING_NOTIFY:
        if (reinterpret_cast<const xcb_mapping_notify_event_t &>(event).request
            != XCB_MAPPING_POINTER)
            remake();
        break;
    default:
        break;
    }
}

/// A key that is held down repeats as a release and a press of the same moment,
/// also where it was pressed before it became ours.
void X11HotKey::handleKey(const xcb_key_press_event_t &event)
{
    if (!m_bound || event.detail != m_bound->key)
        return;
    if (event.response_type == XCB_KEY_RELEASE)
        m_releasedAt = event.time;
    else if (m_releasedAt != event.time && onPress)
        onPress();
}

/// The keyboard's map has changed, and with it perhaps the bits of modifiers and
/// locks. A combination that somebody else has now is tried again next time.
void X11HotKey::remake()
{
    if (!m_bound || !m_connection.isUsable())
        return;
    const auto states = wantedStates();
    if (states == m_states)
        return;
    release(std::exchange(m_states, {}));
    grab(states);
}

/// The state that the combination has with no lock key on, and with every other
/// set of them.
std::vector<uint16_t> X11HotKey::wantedStates() const
{
    const ModifierBits bits = ModifierBits::read(m_connection.xcb());
    std::vector<uint16_t> states { bits.state(m_bound->modifiers) };
    for (const uint16_t lock : { uint16_t { XCB_MOD_MASK_LOCK }, bits.numLock, bits.scrollLock }) {
        if (lock == 0 || (states.back() & lock) != 0)
            continue;
        const auto count = states.size();
        for (size_t i = 0; i < count; ++i)
            states.push_back(static_cast<uint16_t>(states[i] | lock));
    }
    return states;
}

/// All or nothing.
bool X11HotKey::grab(const std::vector<uint16_t> &states)
{
    auto *connection = m_connection.xcb();
    std::vector<xcb_void_cookie_t> cookies;
    forEachRoot(connection, [&](xcb_window_t root) {
        for (const uint16_t state : states)
            cookies.push_back(xcb_grab_key_checked(connection, 0, root, state, m_bound->key,
                                                   XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    });
    bool isGranted = true;
    // From the last to the first: when that is known all are, and the server is
    // waited for once.
    while (!cookies.empty()) {
        const auto error = Xcb::owned(xcb_request_check(connection, cookies.back()));
        cookies.pop_back();
        isGranted = isGranted && !error;
    }
    if (isGranted)
        m_states = states;
    else
        release(states);
    return isGranted;
}

void X11HotKey::release(const std::vector<uint16_t> &states)
{
    auto *connection = m_connection.xcb();
    forEachRoot(connection, [&](xcb_window_t root) {
        for (const uint16_t state : states)
            xcb_ungrab_key(connection, m_bound->key, root, state);
    });
    xcb_flush(connection);
}
