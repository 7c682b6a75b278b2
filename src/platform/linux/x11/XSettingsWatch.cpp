#include "platform/linux/x11/XSettingsWatch.h"

#include "platform/linux/x11/X11Root.h"

#include <xcb/xfixes.h>

namespace {

constexpr uint32_t longestProperty = 1 << 16; // 32-bit units.

xcb_intern_atom_cookie_t intern(xcb_connection_t *connection, const QByteArray &name)
{
    return xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.constData());
}

}

XSettingsWatch::XSettingsWatch(WatchConnection &connection)
    : m_connection(connection)
{
    connection.addEventHandler([this](const auto &event) { handleEvent(event); });
}

void XSettingsWatch::start()
{
    if (!m_connection.isUsable())
        return;
    xcb_connection_t *connection = m_connection.xcb();
    const int screen = X11Root::screenNumber(connection, m_connection.root());
    const auto settings = intern(connection, "_XSETTINGS_SETTINGS");
    const auto selection = intern(connection, "_XSETTINGS_S" + QByteArray::number(screen));
    m_connection.whenAnswered<xcb_intern_atom_reply_t>(
        settings, [this](const auto *reply) { m_settings = reply ? reply->atom : Xcb::none; });
    m_connection.whenAnswered<xcb_intern_atom_reply_t>(selection, [this](const auto *reply) {
        m_selection = reply ? reply->atom : Xcb::none;
        if (m_selection != Xcb::none)
            watchSelection();
    });
    xcb_flush(connection);
}

void XSettingsWatch::watchSelection()
{
    xcb_connection_t *connection = m_connection.xcb();
    xcb_xfixes_select_selection_input(connection, m_connection.root(), m_selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    m_connection.whenAnswered<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(connection, m_selection),
        [this](const auto *reply) { follow(reply ? reply->owner : Xcb::none); });
}

void XSettingsWatch::follow(xcb_window_t owner)
{
    m_owner = owner;
    if (owner == Xcb::none) {
        onSettings({});
        return;
    }
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection.xcb(), owner, XCB_CW_EVENT_MASK, &events);
    ask();
}

void XSettingsWatch::ask()
{
    m_connection.whenAnswered<xcb_get_property_reply_t>(
        xcb_get_property(m_connection.xcb(), 0, m_owner, m_settings, m_settings, 0,
                         longestProperty),
        [this, owner = m_owner](const xcb_get_property_reply_t *reply) {
            if (owner != m_owner || !reply || reply->format != 8)
                return;
            onSettings(XSettings::parse({ static_cast<const char *>(xcb_get_property_value(reply)),
                                          xcb_get_property_value_length(reply) }));
        });
}

void XSettingsWatch::handleEvent(const xcb_generic_event_t &event)
{
    if (m_selection == Xcb::none)
        return;
    const int type = event.response_type & 0x7f; // Without the mark of sent events.
    if (type == m_connection.fixesFirstEvent() + XCB_XFIXES_SELECTION_NOTIFY) {
        const auto &notice = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
        if (notice.selection == m_selection)
            follow(notice.owner);
    } else if (type == XCB_PROPERTY_NOTIFY && m_owner != Xcb::none) {
        const auto &notice = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        if (notice.window == m_owner && notice.atom == m_settings)
            ask();
    }
}
