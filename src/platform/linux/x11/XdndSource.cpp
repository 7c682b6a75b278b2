#include "platform/linux/x11/XdndSource.h"

#include "base/MainQueue.h"

#include <algorithm>
#include <utility>

namespace {

constexpr quint32 newestVersion = 5;
constexpr quint32 oldestVersion = 3;
constexpr quint32 versionWithAnswer = 5; // Older ones say that they are done, but not how.
constexpr double statusLimit = 5; // Seconds for a target to answer where the button was released.
constexpr double finishLimit = 10; // Seconds for a target to say whether it took the drop.
constexpr int deepest = 32; // Windows within windows.

}

XdndSource::XdndSource(MainQueue &queue, Xcb::Atoms &atoms, xcb_window_t root, Offer offer)
    : m_queue(queue)
    , m_atoms(atoms)
    , m_connection(Xcb::toolkitConnection())
    , m_root(root)
    , m_offer(std::move(offer))
{
    Xcb::setProperty(m_connection, m_offer.window, m_atoms("XdndTypeList"), XCB_ATOM_ATOM,
                     m_offer.types);
    Xcb::setProperty(m_connection, m_offer.window, m_atoms("XdndActionList"), XCB_ATOM_ATOM,
                     m_offer.actions);
    xcb_set_selection_owner(m_connection, m_offer.window, m_atoms("XdndSelection"),
                            XCB_CURRENT_TIME);
    xcb_flush(m_connection);
}

void XdndSource::move(const QPoint &at, xcb_timestamp_t time)
{
    if (m_phase != Phase::Hovering)
        return;
    const Target below = targetAt(at);
    if (below.window != m_target.window) {
        leave();
        m_target = below;
        const auto &types = m_offer.types;
        const quint32 hasMore = types.size() > 3 ? 1 : 0;
        if (below.window != Xcb::none)
            send("XdndEnter",
                 { m_offer.window, below.version << 24 | hasMore, types.value(0), types.value(1),
                   types.value(2) });
    }
    m_next = Place { at, time };
    sendNext();
}

void XdndSource::release(const QPoint &at, xcb_timestamp_t time)
{
    if (m_phase != Phase::Hovering)
        return;
    move(at, time);
    m_phase = Phase::Released;
    m_released = time;
    m_limit = m_queue.after(statusLimit, [this] {
        leave();
        end(false);
    });
    settle();
}

void XdndSource::cancel()
{
    if (m_phase == Phase::Hovering || m_phase == Phase::Released)
        leave();
    end(false);
}

/// The innermost windows are asked last: a frame of the window manager's is not aware
/// itself. Windows without input, as the drag's own picture, are not seen here.
XdndSource::Target XdndSource::targetAt(const QPoint &at)
{
    const auto x = static_cast<qint16>(at.x());
    const auto y = static_cast<qint16>(at.y());
    xcb_window_t window = m_root;
    for (int depth = 0; depth < deepest; ++depth) {
        const auto cookie = xcb_translate_coordinates(m_connection, m_root, window, x, y);
        const auto reply
            = Xcb::owned(xcb_translate_coordinates_reply(m_connection, cookie, nullptr));
        if (!reply || reply->child == Xcb::none)
            break;
        window = reply->child;
        if (Xcb::isOwn(m_connection, window) && window != m_offer.ownTarget)
            break;
        const Target target = targetOf(window);
        if (target.window != Xcb::none)
            return target;
    }
    return {};
}

/// A proxy names itself as its own; one that does not was left behind by a program
/// that has died.
XdndSource::Target XdndSource::targetOf(xcb_window_t window)
{
    const auto first = [&](xcb_window_t of, const char *name, xcb_atom_t type) {
        return Xcb::property32(m_connection, of, m_atoms(name), type, 1).value(0);
    };
    xcb_window_t proxy = first(window, "XdndProxy", XCB_ATOM_WINDOW);
    if (proxy == Xcb::none || first(proxy, "XdndProxy", XCB_ATOM_WINDOW) != proxy)
        proxy = window;
    const quint32 version = first(proxy, "XdndAware", XCB_ATOM_ATOM);
    if (version < oldestVersion)
        return {};
    return { window, proxy, std::min(version, newestVersion) };
}

void XdndSource::leave()
{
    if (m_target.window != Xcb::none)
        send("XdndLeave", { m_offer.window, 0 });
    m_target = {};
    m_awaitsStatus = false;
    m_quiet = {};
    m_next.reset();
    setAction(Xcb::none);
}

void XdndSource::sendNext()
{
    if (m_awaitsStatus || !m_next)
        return;
    const auto [at, time] = *m_next;
    m_next.reset();
    if (m_target.window == Xcb::none || m_quiet.contains(at))
        return;
    const auto place = static_cast<quint32>(at.x()) << 16 | (static_cast<quint32>(at.y()) & 0xffff);
    send("XdndPosition", { m_offer.window, 0, place, time, m_offer.actions.first() });
    m_awaitsStatus = true;
}

void XdndSource::handleMessage(const xcb_client_message_event_t &message)
{
    const quint32 *data = message.data.data32;
    if (message.window != m_offer.window || message.format != 32 || data[0] == Xcb::none
        || data[0] != m_target.window)
        return; // Or the late answer of a window that the pointer has passed.
    if (message.type == m_atoms("XdndStatus"))
        answered(data);
    else if (message.type == m_atoms("XdndFinished") && m_phase == Phase::Dropped)
        end((data[1] & 1) || m_target.version < versionWithAnswer);
}

void XdndSource::answered(const quint32 *data)
{
    constexpr quint32 accepts = 1;
    constexpr quint32 wantsEveryMove = 2;
    if (m_phase != Phase::Hovering && m_phase != Phase::Released)
        return;
    m_awaitsStatus = false;
    m_quiet = {};
    if (!(data[1] & wantsEveryMove))
        m_quiet = QRect(static_cast<qint16>(data[2] >> 16), static_cast<qint16>(data[2] & 0xffff),
                        static_cast<int>(data[3] >> 16), static_cast<int>(data[3] & 0xffff));
    const xcb_atom_t action = data[4] ? data[4] : m_atoms("XdndActionCopy");
    setAction(data[1] & accepts ? action : Xcb::none);
    sendNext();
    settle();
}

/// Drops once the target has answered where the button was released.
void XdndSource::settle()
{
    if (m_phase != Phase::Released || m_awaitsStatus)
        return;
    if (m_action == Xcb::none) {
        leave();
        return end(false);
    }
    m_phase = Phase::Dropped;
    send("XdndDrop", { m_offer.window, 0, m_released });
    m_limit = m_queue.after(finishLimit, [this] { end(false); });
}

void XdndSource::setAction(xcb_atom_t action)
{
    if (std::exchange(m_action, action) != action && onAction)
        onAction(action);
}

void XdndSource::end(bool accepted)
{
    m_phase = Phase::Ended;
    m_limit.reset();
    if (const auto told = std::exchange(onEnd, nullptr))
        told(accepted);
}

void XdndSource::send(const char *type, std::initializer_list<quint32> data)
{
    Xcb::sendMessage(m_connection, m_target.proxy, m_atoms(type), data, m_target.window);
}
