#include "platform/linux/x11/Xcb.h"

#include <QGuiApplication>

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// What a start needs to know, in one go.
constexpr char usualAtoms[]
    = "TARGETS MULTIPLE ATOM_PAIR INCR TIMESTAMP CLIPBOARD XdndSelection text/html "
      "_VANTLE_TIME _NET_ACTIVE_WINDOW CLIPBOARD_MANAGER SAVE_TARGETS _VANTLE_SAVED "
      "XdndTypeList text/x-moz-url XdndActionCopy XdndActionLink _NET_CLIENT_LIST "
      "_NET_SUPPORTING_WM_CHECK _NET_WM_STATE _NET_WM_STATE_ABOVE _NET_WM_STATE_STICKY "
      "_NET_WM_STATE_SKIP_TASKBAR _NET_WM_STATE_SKIP_PAGER _NET_WM_DESKTOP "
      "_NET_SHOWING_DESKTOP _NET_RESTACK_WINDOW _MOTIF_WM_HINTS WM_HINTS WM_PROTOCOLS "
      "WM_TAKE_FOCUS _NET_WM_STRUT_PARTIAL _NET_WM_STRUT _NET_WM_WINDOW_TYPE "
      "_NET_WM_WINDOW_TYPE_DOCK _NET_CURRENT_DESKTOP _GTK_WORKAREAS_D0 _XSETTINGS_SETTINGS "
      "XdndAware XdndProxy XdndActionList XdndEnter XdndPosition XdndStatus XdndLeave "
      "XdndDrop XdndFinished XdndActionMove _NET_WM_CM_S0 _NET_SYSTEM_TRAY_S0 "
      "_XSETTINGS_S0 application/vnd.portal.filetransfer application/vnd.portal.files "
      "text/uri-list";

/// Those of a window that the connection hears of; none if there is no such window.
std::optional<quint32> eventsOf(xcb_connection_t *connection, xcb_window_t window)
{
    const auto known = Xcb::owned(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), nullptr));
    return known ? std::optional(known->your_event_mask) : std::nullopt;
}

bool setEvents(xcb_connection_t *connection, xcb_window_t window, quint32 events)
{
    const auto error = Xcb::owned(xcb_request_check(
        connection,
        xcb_change_window_attributes_checked(connection, window, XCB_CW_EVENT_MASK, &events)));
    return !error;
}

}

xcb_connection_t *Xcb::toolkitConnection()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

QList<quint32> Xcb::values32(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->format != 32)
        return {};
    const auto *values = static_cast<const quint32 *>(xcb_get_property_value(reply));
    return { values, values + reply->value_len };
}

QList<quint32> Xcb::property32(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t name,
                               xcb_atom_t type, quint32 limit)
{
    const auto cookie = xcb_get_property(connection, 0, window, name, type, 0, limit);
    return values32(owned(xcb_get_property_reply(connection, cookie, nullptr)).get());
}

xcb_window_t Xcb::selectionOwner(xcb_connection_t *connection, xcb_atom_t selection)
{
    const auto cookie = xcb_get_selection_owner(connection, selection);
    const auto reply = owned(xcb_get_selection_owner_reply(connection, cookie, nullptr));
    return reply ? reply->owner : none;
}

void Xcb::send(xcb_connection_t *connection, xcb_void_cookie_t checked)
{
    xcb_discard_reply(connection, checked.sequence);
    xcb_flush(connection);
}

void Xcb::setProperty(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t name,
                      xcb_atom_t type, const QList<quint32> &values)
{
    send(connection,
         xcb_change_property_checked(connection, XCB_PROP_MODE_REPLACE, window, name, type, 32,
                                     static_cast<quint32>(values.size()), values.constData()));
}

void Xcb::askTime(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t property)
{
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, property, XCB_ATOM_INTEGER, 32, 0,
                        nullptr);
    xcb_flush(connection);
}

void Xcb::sendMessage(xcb_connection_t *connection, xcb_window_t to, xcb_atom_t type,
                      std::initializer_list<quint32> data, xcb_window_t about, quint32 mask)
{
    xcb_client_message_event_t message {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = about;
    message.type = type;
    std::copy(data.begin(), data.end(), message.data.data32);
    sendEvent(connection, to, message, mask);
}

bool Xcb::listenTo(xcb_connection_t *connection, xcb_window_t window, quint32 events)
{
    const auto heard = eventsOf(connection, window);
    return heard && setEvents(connection, window, *heard | events);
}

Ticket Xcb::hear(xcb_connection_t *connection, xcb_window_t window, quint32 events)
{
    const auto heard = eventsOf(connection, window);
    if (!heard || !setEvents(connection, window, *heard | events))
        return nullptr;
    return Ticket(nullptr, [=, added = events & ~*heard](void *) {
        if (const auto now = eventsOf(connection, window))
            setEvents(connection, window, *now & ~added);
    });
}

xcb_window_t Xcb::unseenWindow(xcb_connection_t *connection)
{
    const auto window = xcb_generate_id(connection);
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection, 0, window, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0,
                      XCB_CW_EVENT_MASK, &events);
    return window;
}

quint32 Xcb::serverTime()
{
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), xcb_disconnect);
    if (xcb_connection_has_error(connection.get()))
        return 0;
    const auto window = unseenWindow(connection.get());
    askTime(connection.get(), window, XCB_ATOM_WM_NAME);
    while (const Owned<xcb_generic_event_t> event { xcb_wait_for_event(connection.get()) }) {
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY)
            return reinterpret_cast<const xcb_property_notify_event_t *>(event.get())->time;
    }
    return 0;
}

bool Xcb::isOwn(xcb_connection_t *connection, xcb_window_t window)
{
    const auto *setup = xcb_get_setup(connection);
    return (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

xcb_atom_t Xcb::Atoms::operator()(const QByteArray &name) const
{
    static std::mutex mutex;
    static QHash<QByteArray, xcb_atom_t> known;
    const std::lock_guard lock(mutex);
    std::vector<std::pair<QByteArray, xcb_intern_atom_cookie_t>> asked;
    const auto ask = [&](const QByteArray &each) {
        asked.emplace_back(
            each,
            xcb_intern_atom(m_connection, 0, static_cast<quint16>(each.size()), each.constData()));
    };
    if (known.isEmpty())
        std::ranges::for_each(QByteArray(usualAtoms).split(' '), ask);
    if (!known.contains(name))
        ask(name);
    for (const auto &[each, cookie] : asked) {
        const auto reply = owned(xcb_intern_atom_reply(m_connection, cookie, nullptr));
        if (reply)
            known.insert(each, reply->atom);
    }
    return known.value(name);
}

QStringList Xcb::Atoms::names(const QList<xcb_atom_t> &atoms)
{
    std::vector<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> asked;
    for (const xcb_atom_t atom : atoms) {
        if (!m_names.contains(atom))
            asked.emplace_back(atom, xcb_get_atom_name(m_connection, atom));
    }
    for (const auto &[atom, cookie] : asked) {
        const auto reply = owned(xcb_get_atom_name_reply(m_connection, cookie, nullptr));
        if (reply)
            m_names.insert(atom,
                           QString::fromUtf8(xcb_get_atom_name_name(reply.get()),
                                             xcb_get_atom_name_name_length(reply.get())));
    }
    QStringList names;
    for (const xcb_atom_t atom : atoms) {
        if (m_names.contains(atom))
            names.append(m_names.value(atom));
    }
    return names;
}
