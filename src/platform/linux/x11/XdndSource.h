#pragma once

#include "base/Ticket.h"
#include "platform/linux/x11/Xcb.h"

#include <QPoint>
#include <QRect>

#include <functional>
#include <optional>

class MainQueue;

/// The sending side of XDND for one drag: finds the window below the pointer, tells it
/// of the drag and goes by its answers. A target hears of the pointer's next place when
/// it has answered the last, and a release waits for that as well: a target that a busy
/// machine holds up takes the drop all the same. Speaks versions 3 to 5 of the protocol.
/// Points are pixels of the root window. Main thread; waits for the X server alone.
class XdndSource
{
public:
    struct Offer
    {
        xcb_window_t window = Xcb::none; // Of ours; owns the selection, and is answered.
        QList<xcb_atom_t> types;
        QList<xcb_atom_t> actions; // The first is asked for.
        xcb_window_t ownTarget
            = Xcb::none; // Of the windows of ours, the only one that may take it.
    };

    /// Takes the selection, and has everything in its place before the first target hears
    /// of the drag.
    XdndSource(MainQueue &queue, Xcb::Atoms &atoms, xcb_window_t root, Offer offer);

    void move(const QPoint &at, xcb_timestamp_t time);
    void release(const QPoint &at, xcb_timestamp_t time);
    void cancel();
    /// An answer of a target, or any other message.
    void handleMessage(const xcb_client_message_event_t &message);

    /// What the window below the pointer would do with the drop; none if it refuses.
    std::function<void(xcb_atom_t)> onAction;
    /// Once, last of all: whether a target took it.
    std::function<void(bool accepted)> onEnd;

private:
    enum class Phase { Hovering, Released, Dropped, Ended };
    struct Target
    {
        xcb_window_t window = Xcb::none;
        xcb_window_t proxy = Xcb::none; // Gets the messages.
        quint32 version = 0;
    };
    struct Place
    {
        QPoint at;
        xcb_timestamp_t time;
    };

    Target targetAt(const QPoint &at);
    Target targetOf(xcb_window_t window);
    void leave();
    void sendNext();
    void settle();
    void answered(const quint32 *data);
    void setAction(xcb_atom_t action);
    void end(bool accepted);
    void send(const char *type, std::initializer_list<quint32> data);

    MainQueue &m_queue;
    Xcb::Atoms &m_atoms;
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    Offer m_offer;
    Phase m_phase = Phase::Hovering;
    Target m_target;
    xcb_atom_t m_action = Xcb::none; // What the target has answered.
    QRect m_quiet; // Where it need not hear of the pointer.
    bool m_awaitsStatus = false;
    std::optional<Place> m_next; // Not told yet.
    xcb_timestamp_t m_released = 0;
    Ticket m_limit;
};
