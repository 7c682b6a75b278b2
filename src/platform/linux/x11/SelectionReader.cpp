#include "platform/linux/x11/SelectionReader.h"

#include <poll.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::chrono::seconds silenceLimit(3);
constexpr qsizetype typesCap = 64 << 10; // Bytes.

}

SelectionReader::SelectionReader(const QByteArray &selection, quint32 time,
                                 Clock::time_point deadline)
    : m_connection(xcb_connect(nullptr, nullptr))
    , m_atoms(m_connection)
    , m_time(time)
    , m_deadline(deadline)
{
    if (xcb_connection_has_error(m_connection))
        return;
    m_selection = m_atoms(selection);
    m_window = Xcb::unseenWindow(m_connection);
    // The notice of its destruction tells a source's death at once.
    m_owner = Xcb::selectionOwner(m_connection, m_selection);
    m_ownerGone
        = !Xcb::listenTo(m_connection, m_owner, XCB_EVENT_MASK_STRUCTURE_NOTIFY) || !isOwnerThere();
}

SelectionReader::~SelectionReader()
{
    xcb_disconnect(m_connection);
}

bool SelectionReader::isOwnerThere()
{
    return Xcb::selectionOwner(m_connection, m_selection) == m_owner;
}

SelectionReader::Clock::time_point SelectionReader::patience() const
{
    return std::min(Clock::now() + silenceLimit, m_deadline);
}

/// The next event; null when there was none until then, or when there will be none.
SelectionReader::Event SelectionReader::nextEvent(Clock::time_point until)
{
    xcb_flush(m_connection);
    while (!m_ownerGone && Clock::now() < m_deadline) {
        Event event(xcb_poll_for_event(m_connection));
        if (event) {
            const auto type = event->response_type & 0x7f;
            if (type == XCB_DESTROY_NOTIFY
                && reinterpret_cast<xcb_destroy_notify_event_t *>(event.get())->window == m_owner)
                m_ownerGone = true;
            else if (type != 0)
                return event;
            continue;
        }
        if (xcb_connection_has_error(m_connection)) {
            m_ownerGone = true;
            break;
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
        if (left.count() <= 0)
            return nullptr;
        pollfd socket { xcb_get_file_descriptor(m_connection), POLLIN, 0 };
        poll(&socket, 1, static_cast<int>(left.count()));
    }
    return nullptr;
}

QStringList SelectionReader::types()
{
    const QByteArray data = read("TARGETS", typesCap).value_or(QByteArray());
    QList<xcb_atom_t> atoms(data.size() / static_cast<qsizetype>(sizeof(xcb_atom_t)));
    std::memcpy(atoms.data(), data.constData(),
                static_cast<size_t>(atoms.size()) * sizeof(xcb_atom_t));
    return m_atoms.names(atoms);
}

std::optional<QByteArray> SelectionReader::read(const QByteArray &type, qsizetype cap)
{
    if (m_ownerGone || m_window == Xcb::none || !isOwnerThere())
        return std::nullopt;
    // A property of its own, so that the late answer to an earlier question is
    // not taken for the answer to this one.
    const auto property = m_atoms("VANTLE_DROP_" + QByteArray::number(m_reads++));
    const auto target = m_atoms(type);
    xcb_convert_selection(m_connection, m_window, m_selection, target, property, m_time);
    const auto until = patience();
    while (const Event event = nextEvent(until)) {
        if ((event->response_type & 0x7f) != XCB_SELECTION_NOTIFY)
            continue;
        const auto *notify = reinterpret_cast<xcb_selection_notify_event_t *>(event.get());
        if (notify->target != target)
            continue;
        if (notify->property == Xcb::none)
            return QByteArray();
        if (notify->property == property)
            return take(property, cap);
    }
    return std::nullopt;
}

/// In pieces (INCR) each deletion of the property asks for the next; an empty one is the last.
std::optional<QByteArray> SelectionReader::take(xcb_atom_t property, qsizetype cap)
{
    const auto cookie
        = xcb_get_property(m_connection, 0, m_window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 0);
    const auto reply = Xcb::owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return std::nullopt;
    QByteArray data;
    if (reply->type != m_atoms("INCR"))
        return appendPiece(property, data, cap) ? std::optional(data) : std::nullopt;
    xcb_delete_property(m_connection, m_window, property);
    auto until = patience();
    while (const Event event = nextEvent(until)) {
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
            continue;
        const auto *notify = reinterpret_cast<xcb_property_notify_event_t *>(event.get());
        if (notify->atom != property || notify->state != XCB_PROPERTY_NEW_VALUE)
            continue;
        const auto before = data.size();
        if (!appendPiece(property, data, cap))
            return std::nullopt;
        if (data.size() == before)
            return data;
        until = patience();
    }
    return std::nullopt;
}

bool SelectionReader::appendPiece(xcb_atom_t property, QByteArray &data, qsizetype cap)
{
    const auto room = static_cast<quint32>((cap - data.size()) / 4 + 1); // In units of four bytes.
    const auto cookie
        = xcb_get_property(m_connection, 1, m_window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, room);
    const auto reply = Xcb::owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return false;
    const auto size = xcb_get_property_value_length(reply.get());
    if (reply->bytes_after > 0 || data.size() + size > cap)
        return false;
    data.append(static_cast<const char *>(xcb_get_property_value(reply.get())), size);
    return true;
}
