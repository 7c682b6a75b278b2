#pragma once

#include "platform/PointerMonitor.h"
#include "platform/linux/x11/ModifierBits.h"
#include "platform/linux/x11/RawPresses.h"
#include "platform/linux/x11/WatchConnection.h"

#include <QPoint>

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class MainQueue;

/// Raw XI 2 events, which come while another program's drag grabs the pointer
/// too, of buttons and of the finger that acts as the pointer. They carry no position, so each is
/// followed by a question for it and is delivered, in order, when that has been answered. Motion is
/// listened to only while the left button is down, and looked at every eight milliseconds.
class X11PointerMonitor final : public PointerMonitor
{
public:
    X11PointerMonitor(WatchConnection &connection, MainQueue &queue);
    X11PointerMonitor(const X11PointerMonitor &) = delete;
    X11PointerMonitor &operator=(const X11PointerMonitor &) = delete;

    [[nodiscard]] Ticket watch(std::function<void(PointerEvent)> handler) override;
    std::optional<QPointF> location() const override;
    Modifiers modifiers() const override;
    unsigned pressedButtons() const override;
    [[nodiscard]] Ticket look(std::function<void(const Look &)> done) override;

    /// The gate is asked at each release whether another program's drag hovers
    /// over a window of ours, and may therefore be dropping on it.
    void setReleaseGate(std::function<bool()> dropIsLanding) { m_gate = std::move(dropIsLanding); }
    /// That drag has left, or its drop has ended: delivers the release that waits.
    void releaseGateOpened();

private:
    using Handler = std::function<void(PointerEvent)>;
    enum class Listen { Nothing, Buttons, ButtonsAndMotion };

    /// What the server has reported and what must still be found out about it.
    struct Incoming
    {
        PointerEvent event;
        bool isKnown = false;
        bool isOnOwnWindow = false; // Of a press.
        std::optional<QPoint> native; // None where the server did not tell.
    };
    using IncomingPointer = std::shared_ptr<Incoming>;

    void handleEvent(const xcb_generic_event_t &event);
    void handleBreak();
    void learnLeftButton();
    void learnDevices();
    void enqueue(PointerEvent event);
    void findWindow(const IncomingPointer &press, xcb_window_t window, xcb_window_t child);
    void setKnown(const IncomingPointer &incoming);
    void deliver(const Incoming &incoming);
    void deliverPress(const Incoming &incoming);
    void deliverMotion(const Incoming &incoming);
    void deliverRelease();
    void tell(PointerEvent event);
    bool isWatched();
    void listen(Listen listen);
    void sample();
    Xcb::Owned<xcb_query_pointer_reply_t> queryPointer() const;

    WatchConnection &m_connection;
    MainQueue &m_queue;
    std::vector<std::weak_ptr<Handler>> m_handlers;
    std::function<bool()> m_gate;
    Listen m_listen = Listen::Nothing;
    RawPresses m_presses;
    std::deque<IncomingPointer> m_incoming; // In the order of the events.

    bool m_leftDown = false; // According to the last event read, delivered or not.
    std::optional<QPoint> m_native; // While a delivered press is open.
    bool m_sampling = false; // A look at the position is under way or due.
    bool m_movedMeanwhile = false; // Motion was reported since the last look.
    Ticket m_nextSample;
    Ticket m_heldRelease; // Runs while a release waits for the gate.

    mutable ModifierBits m_modifierBits;
    mutable bool m_modifierBitsKnown = false;
};
