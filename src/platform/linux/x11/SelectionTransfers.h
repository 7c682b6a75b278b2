#pragma once

#include "base/Ticket.h"
#include "platform/linux/x11/Xcb.h"

#include <list>

class MainQueue;

/// Hands selections over to other programs. What is too large for one request goes in
/// pieces (INCR), each when the last was fetched, and goes on when the selection has
/// another owner by then. Main thread; waits for the X server alone.
class SelectionTransfers
{
public:
    SelectionTransfers(MainQueue &queue, Xcb::Atoms &atoms);

    Xcb::Atoms &atoms() { return m_atoms; }

    void give(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, const QByteArray &data);
    void setProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, quint8 format,
                     quint32 count, const void *values);
    /// A property of another program was deleted: perhaps a piece was fetched.
    void fetched(xcb_window_t requestor, xcb_atom_t property);

private:
    struct Transfer
    {
        xcb_window_t requestor = Xcb::none;
        xcb_atom_t property = Xcb::none;
        xcb_atom_t type = Xcb::none;
        QByteArray data;
        qsizetype sent = 0;
        Ticket hearing; // Shared by all of that requestor's.
        Ticket limit;
    };

    void begin(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
               const QByteArray &data);
    Ticket limit(xcb_window_t requestor, xcb_atom_t property);
    void end(xcb_window_t requestor, xcb_atom_t property);

    MainQueue &m_queue;
    Xcb::Atoms &m_atoms;
    xcb_connection_t *m_connection;
    std::list<Transfer> m_transfers;
};
