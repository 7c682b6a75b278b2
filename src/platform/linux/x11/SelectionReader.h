#pragma once

#include "platform/linux/x11/Xcb.h"

#include <QByteArray>

#include <chrono>
#include <optional>

/// Reads what another program drags or has copied, on a connection of its own.
/// Every call waits for that program, which may hang, die, stutter or never stop sending:
/// for worker threads only.
class SelectionReader
{
public:
    using Clock = std::chrono::steady_clock;

    /// time: the server time of the drop. Sources of drags may answer no other.
    SelectionReader(const QByteArray &selection, quint32 time, Clock::time_point deadline);
    ~SelectionReader();
    SelectionReader(const SelectionReader &) = delete;
    SelectionReader &operator=(const SelectionReader &) = delete;

    /// The types that the source says it offers.
    QStringList types();
    /// What it offers of that type, empty where it refuses. None where it went, offers something
    /// else by now, sent nothing for three seconds or until the deadline, or more than the cap.
    std::optional<QByteArray> read(const QByteArray &type, qsizetype cap);

private:
    using Event = Xcb::Owned<xcb_generic_event_t>;

    bool isOwnerThere();
    Event nextEvent(Clock::time_point until);
    std::optional<QByteArray> take(xcb_atom_t property, qsizetype cap);
    bool appendPiece(xcb_atom_t property, QByteArray &data, qsizetype cap);
    Clock::time_point patience() const;

    xcb_connection_t *m_connection;
    Xcb::Atoms m_atoms;
    xcb_atom_t m_selection = Xcb::none;
    xcb_window_t m_window = Xcb::none;
    xcb_window_t m_owner = Xcb::none;
    quint32 m_time;
    Clock::time_point m_deadline;
    int m_reads = 0;
    bool m_ownerGone = false;
};
