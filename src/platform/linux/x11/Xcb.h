#pragma once

#include "base/Ticket.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QStringList>

#include <xcb/xcb.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>

namespace Xcb {

inline constexpr quint32 none = 0; // No window, no atom.

struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};

/// Replies and events belong to whoever gets them.
template<typename T>
using Owned = std::unique_ptr<T, Free>;
template<typename T>
Owned<T> owned(T *reply)
{
    return Owned<T>(reply);
}

/// The connection of the toolkit; null when it does not run on X11.
xcb_connection_t *toolkitConnection();

/// The 32-bit values in a reply; none where it has others or is null.
QList<quint32> values32(const xcb_get_property_reply_t *reply);
/// The 32-bit values of a property, at most that many; none if the window or the
/// property does not exist. Waits for the X server.
QList<quint32> property32(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t name,
                          xcb_atom_t type, quint32 limit);

/// Who has the selection, none if nobody. Waits for the X server.
xcb_window_t selectionOwner(xcb_connection_t *connection, xcb_atom_t selection);

/// Sends a request whose failure nobody needs to know, as that a window of another program has
/// gone: the error does not reach the toolkit's log.
void send(xcb_connection_t *connection, xcb_void_cookie_t checked);
/// Replaces a property by 32-bit values.
void setProperty(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t name,
                 xcb_atom_t type, const QList<quint32> &values);
/// A change of a property by nothing, which comes back with the X server's time.
void askTime(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t property);

template<typename Event>
void sendEvent(xcb_connection_t *connection, xcb_window_t to, const Event &event,
               quint32 mask = XCB_EVENT_MASK_NO_EVENT)
{
    std::array<char, 32> bytes {}; // All are sent, also of an event that is shorter.
    static_assert(sizeof(Event) <= bytes.size());
    std::memcpy(bytes.data(), &event, sizeof(Event));
    send(connection, xcb_send_event_checked(connection, 0, to, mask, bytes.data()));
}
void sendMessage(xcb_connection_t *connection, xcb_window_t to, xcb_atom_t type,
                 std::initializer_list<quint32> data, xcb_window_t about,
                 quint32 mask = XCB_EVENT_MASK_NO_EVENT);

/// Lets the connection hear of these events of a window too, beside those that it hears of
/// already: of one window several parts of the program may want to know something. Whether the
/// window is there. Waits for the X server.
bool listenTo(xcb_connection_t *connection, xcb_window_t window, quint32 events);
/// The same for as long as the ticket lives; what was heard before goes on.
[[nodiscard]] Ticket hear(xcb_connection_t *connection, xcb_window_t window, quint32 events);

/// A window that nobody sees; the connection hears of changes of its properties.
xcb_window_t unseenWindow(xcb_connection_t *connection);

/// The X server's present time, asked on a connection of its own: any thread, but
/// not the main one, because it waits for the server to accept a client. 0 where
/// there is no server.
quint32 serverTime();

/// Whether that connection made the window: the X server gives each client a range
/// of numbers.
bool isOwn(xcb_connection_t *connection, xcb_window_t window);

/// Names and numbers of atoms. Of the X server that all connections lead to each number is asked
/// once, those that a start needs in one go. Any thread may ask for numbers.
class Atoms
{
public:
    explicit Atoms(xcb_connection_t *connection)
        : m_connection(connection)
    {
    }
    xcb_atom_t operator()(const QByteArray &name) const;
    QStringList names(const QList<xcb_atom_t> &atoms);

private:
    xcb_connection_t *m_connection;
    QHash<xcb_atom_t, QString> m_names;
};

}
