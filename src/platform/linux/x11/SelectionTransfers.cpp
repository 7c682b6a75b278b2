#include "platform/linux/x11/SelectionTransfers.h"

#include "base/MainQueue.h"

#include <algorithm>

namespace {

// Below the largest request of every server, which is 256 KiB at least.
constexpr qsizetype pieceSize = 128 << 10;
constexpr double silenceLimit = 10; // Seconds for a target to fetch a piece.

}

SelectionTransfers::SelectionTransfers(MainQueue &queue, Xcb::Atoms &atoms)
    : m_queue(queue)
    , m_atoms(atoms)
    , m_connection(Xcb::toolkitConnection())
{
}

void SelectionTransfers::give(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                              const QByteArray &data)
{
    if (data.size() > pieceSize)
        begin(requestor, property, type, data);
    else
        setProperty(requestor, property, type, 8, static_cast<quint32>(data.size()),
                    data.constData());
}

/// Told of before the notice that there is something to fetch.
void SelectionTransfers::begin(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                               const QByteArray &data)
{
    end(requestor, property); // One that its target has given up.
    const auto other = std::find_if(m_transfers.begin(), m_transfers.end(),
                                    [&](const auto &open) { return open.requestor == requestor; });
    const Ticket hearing = other != m_transfers.end()
        ? other->hearing
        : Xcb::hear(m_connection, requestor, XCB_EVENT_MASK_PROPERTY_CHANGE);
    m_transfers.push_back(
        { requestor, property, type, data, 0, hearing, limit(requestor, property) });
    const auto size = static_cast<quint32>(data.size());
    setProperty(requestor, property, m_atoms("INCR"), 32, 1, &size);
}

Ticket SelectionTransfers::limit(xcb_window_t requestor, xcb_atom_t property)
{
    return m_queue.after(silenceLimit, [this, requestor, property] { end(requestor, property); });
}

void SelectionTransfers::fetched(xcb_window_t requestor, xcb_atom_t property)
{
    const auto transfer
        = std::find_if(m_transfers.begin(), m_transfers.end(), [&](const Transfer &open) {
              return open.requestor == requestor && open.property == property;
          });
    if (transfer == m_transfers.end())
        return;
    const auto size = std::min(pieceSize, transfer->data.size() - transfer->sent);
    setProperty(requestor, property, transfer->type, 8, static_cast<quint32>(size),
                transfer->data.constData() + transfer->sent);
    transfer->sent += size;
    if (size == 0) // The empty piece says that it was all.
        return end(requestor, property);
    transfer->limit = limit(requestor, property);
}

void SelectionTransfers::end(xcb_window_t requestor, xcb_atom_t property)
{
    m_transfers.remove_if([&](const Transfer &open) {
        return open.requestor == requestor && open.property == property;
    });
}

void SelectionTransfers::setProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type,
                                     quint8 format, quint32 count, const void *values)
{
    const auto cookie = xcb_change_property_checked(m_connection, XCB_PROP_MODE_REPLACE, window,
                                                    name, type, format, count, values);
    xcb_discard_reply(m_connection, cookie.sequence);
    xcb_flush(m_connection);
}
