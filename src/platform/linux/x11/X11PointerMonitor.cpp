#include "platform/linux/x11/X11PointerMonitor.h"

#include "base/MainQueue.h"
#include "platform/linux/x11/NativeGeometry.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

namespace {

constexpr double sampleInterval = 0.008; // Seconds.
// Seconds for which a release may wait for a drop: more than any drop takes. Only a
// source that hangs over our window with the button released lets it come to that.
constexpr double longestHold = 35;

QPointF inPoints(const QPoint &native)
{
    return NativeGeometry::toPoints(QPointF(native), NativeGeometry::screenScales());
}

/// The server's order is left, middle, right.
unsigned pressed(uint16_t mask)
{
    return (mask / XCB_BUTTON_MASK_1) & 0x1fU;
}

}

X11PointerMonitor::X11PointerMonitor(WatchConnection &connection, MainQueue &queue)
    : m_connection(connection)
    , m_queue(queue)
{
    connection.addEventHandler([this](const auto &event) { handleEvent(event); });
    connection.addBreakHandler([this] { handleBreak(); });
}

Ticket X11PointerMonitor::watch(std::function<void(PointerEvent)> handler)
{
    if (!m_connection.isUsable())
        return nullptr;
    auto ticket = std::make_shared<Handler>(std::move(handler));
    m_handlers.push_back(ticket);
    if (m_listen == Listen::Nothing) {
        m_presses = {}; // A finger may have been lifted unheard.
        learnLeftButton();
        learnDevices();
        listen(Listen::Buttons);
        xcb_flush(m_connection.xcb());
    }
    return ticket;
}

std::optional<QPointF> X11PointerMonitor::location() const
{
    if (m_native && m_leftDown)
        return inPoints(*m_native);
    const auto reply = queryPointer();
    return reply ? std::optional(inPoints({ reply->root_x, reply->root_y })) : std::nullopt;
}

Modifiers X11PointerMonitor::modifiers() const
{
    const auto reply = queryPointer();
    if (!reply)
        return 0;
    if (!std::exchange(m_modifierBitsKnown, true))
        m_modifierBits = ModifierBits::read(m_connection.xcb());
    return m_modifierBits.modifiers(reply->mask);
}

unsigned X11PointerMonitor::pressedButtons() const
{
    const auto reply = queryPointer();
    return reply ? pressed(reply->mask) : 0;
}

Ticket X11PointerMonitor::look(std::function<void(const Look &)> done)
{
    const auto ticket = std::make_shared<std::function<void(const Look &)>>(std::move(done));
    if (!m_connection.isUsable())
        return ticket;
    m_connection.whenAnswered<xcb_query_pointer_reply_t>(
        xcb_query_pointer(m_connection.xcb(), m_connection.root()),
        [weak = std::weak_ptr(ticket)](const auto *reply) {
            const auto handler = weak.lock();
            if (handler && reply)
                (*handler)({ inPoints({ reply->root_x, reply->root_y }), pressed(reply->mask) });
        });
    xcb_flush(m_connection.xcb());
    return ticket;
}

void X11PointerMonitor::releaseGateOpened()
{
    if (m_heldRelease)
        deliverRelease();
}

void X11PointerMonitor::handleEvent(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f; // Without the mark of sent events.
    if (type == XCB_MAPPING_NOTIFY) {
        m_modifierBitsKnown = false;
        learnLeftButton();
        return;
    }
    const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
    if (type != XCB_GE_GENERIC || generic.extension != m_connection.inputOpcode())
        return;
    if (!isWatched()) {
        listen(Listen::Nothing);
        m_leftDown = false;
        return;
    }
    const auto &raw = reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event);
    if (raw.event_type == XCB_INPUT_RAW_TOUCH_BEGIN && !m_presses.knows(raw.sourceid))
        learnDevices(); // It has just been plugged in, and its first touch is lost.
    const auto happened = m_presses.meaning(raw);
    if (happened == PointerEvent::Moved) {
        m_movedMeanwhile = true;
        if (m_leftDown && !m_sampling)
            sample();
    } else if (happened) {
        m_leftDown = *happened == PointerEvent::LeftDown;
        listen(Listen::Buttons);
        m_nextSample.reset();
        m_sampling = false;
        enqueue(*happened);
    }
}

/// Nobody will report the release any more: what has begun must end.
void X11PointerMonitor::handleBreak()
{
    m_nextSample.reset();
    if (std::exchange(m_leftDown, false) || m_heldRelease)
        deliverRelease();
}

/// Raw events name buttons as they are built, whichever the user made the left.
void X11PointerMonitor::learnLeftButton()
{
    m_connection.whenAnswered<xcb_get_pointer_mapping_reply_t>(
        xcb_get_pointer_mapping(m_connection.xcb()), [this](const auto *reply) {
            if (!reply)
                return;
            const uint8_t *map = xcb_get_pointer_mapping_map(reply);
            const uint8_t *left = std::find(map, map + reply->map_len, 1);
            m_presses.setLeftButton(
                left == map + reply->map_len ? 1 : static_cast<uint32_t>(left - map) + 1);
        });
}

/// Raw events do not tell a finger on a screen from one on a touchpad.
void X11PointerMonitor::learnDevices()
{
    m_connection.whenAnswered<xcb_input_xi_query_device_reply_t>(
        xcb_input_xi_query_device(m_connection.xcb(), XCB_INPUT_DEVICE_ALL),
        [this](const auto *reply) {
            if (reply)
                m_presses.learn(*reply);
        });
}

void X11PointerMonitor::enqueue(PointerEvent event)
{
    auto incoming = std::make_shared<Incoming>(Incoming { event, false, false, {} });
    m_incoming.push_back(incoming);
    m_connection.whenAnswered<xcb_query_pointer_reply_t>(
        xcb_query_pointer(m_connection.xcb(), m_connection.root()),
        [this, incoming](const auto *reply) {
            if (reply)
                incoming->native = QPoint(reply->root_x, reply->root_y);
            if (reply && incoming->event == PointerEvent::LeftDown)
                findWindow(incoming, m_connection.root(), reply->child);
            else
                setKnown(incoming);
        });
}

/// Goes down from the root to the window under the pointer: a window manager's
/// frame is not the program's whose window it holds.
void X11PointerMonitor::findWindow(const IncomingPointer &press, xcb_window_t window,
                                   xcb_window_t child)
{
    if (child != XCB_NONE) {
        m_connection.whenAnswered<xcb_query_pointer_reply_t>(
            xcb_query_pointer(m_connection.xcb(), child), [this, press, child](const auto *reply) {
                findWindow(press, child, reply ? reply->child : XCB_NONE);
            });
    } else if (window != m_connection.root()) {
        m_connection.whenProcessKnown(window, [this, press](qint64 process) {
            press->isOnOwnWindow = process == ::getpid();
            setKnown(press);
        });
    } else {
        setKnown(press);
    }
}

/// All is known of this one: delivers it, once all before it have been.
void X11PointerMonitor::setKnown(const IncomingPointer &incoming)
{
    incoming->isKnown = true;
    while (!m_incoming.empty() && m_incoming.front()->isKnown) {
        const IncomingPointer first = m_incoming.front();
        m_incoming.pop_front();
        deliver(*first);
    }
}

void X11PointerMonitor::deliver(const Incoming &incoming)
{
    if (incoming.event == PointerEvent::LeftDown)
        deliverPress(incoming);
    else if (incoming.event != PointerEvent::LeftUp)
        deliverMotion(incoming);
    else if (m_gate && m_gate())
        m_heldRelease = m_queue.after(longestHold, [this] { deliverRelease(); });
    else
        deliverRelease();
}

void X11PointerMonitor::deliverPress(const Incoming &incoming)
{
    if (m_heldRelease)
        deliverRelease();
    m_native.reset();
    if (incoming.isOnOwnWindow || !incoming.native)
        return;
    m_native = incoming.native;
    tell(PointerEvent::LeftDown);
    // The pointer may have moved while we were finding out, unheard.
    if (m_leftDown && m_incoming.empty())
        sample();
}

/// Goes on looking while there is something to see. The last look is one with
/// motion listened to again, so that no movement falls between.
void X11PointerMonitor::deliverMotion(const Incoming &incoming)
{
    const bool isMoved = incoming.native && m_native && incoming.native != m_native;
    if (isMoved) {
        m_native = incoming.native;
        tell(PointerEvent::LeftDragged);
    }
    if (!m_leftDown || !m_sampling || !m_incoming.empty())
        return;
    m_sampling = isMoved || std::exchange(m_movedMeanwhile, false);
    if (!m_sampling)
        return;
    listen(Listen::Buttons);
    m_nextSample = m_queue.after(sampleInterval, [this] { sample(); });
}

void X11PointerMonitor::deliverRelease()
{
    m_heldRelease.reset();
    tell(PointerEvent::LeftUp);
    m_native.reset();
}

void X11PointerMonitor::tell(PointerEvent event)
{
    // Copies, because a handler may drop its ticket or watch anew.
    for (const auto &weak : std::vector(m_handlers)) {
        if (const auto handler = weak.lock())
            (*handler)(event);
    }
}

bool X11PointerMonitor::isWatched()
{
    std::erase_if(m_handlers, [](const auto &handler) { return handler.expired(); });
    return !m_handlers.empty();
}

void X11PointerMonitor::listen(Listen listen)
{
    if (std::exchange(m_listen, listen) == listen)
        return;
    struct
    {
        xcb_input_event_mask_t head;
        uint32_t mask;
    } selection { { XCB_INPUT_DEVICE_ALL_MASTER, 1 }, 0 };
    if (listen != Listen::Nothing)
        selection.mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS
            | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN
            | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_END;
    if (listen == Listen::ButtonsAndMotion)
        selection.mask
            |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_UPDATE;
    xcb_input_xi_select_events(m_connection.xcb(), m_connection.root(), 1, &selection.head);
}

void X11PointerMonitor::sample()
{
    m_sampling = true;
    listen(Listen::ButtonsAndMotion);
    enqueue(PointerEvent::LeftDragged);
    xcb_flush(m_connection.xcb());
}

Xcb::Owned<xcb_query_pointer_reply_t> X11PointerMonitor::queryPointer() const
{
    if (!m_connection.isUsable())
        return {};
    return Xcb::owned(xcb_query_pointer_reply(
        m_connection.xcb(), xcb_query_pointer(m_connection.xcb(), m_connection.root()), nullptr));
}
