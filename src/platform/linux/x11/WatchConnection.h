#pragma once

#include "platform/linux/x11/Xcb.h"

#include <QObject>

#include <xcb/xcb.h>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

class QSocketNotifier;

/// A connection to the X server beside the toolkit's, for watching the session:
/// what is selected on it disturbs nobody. Replies come by callback, in the order
/// in which they were asked for, so that nothing here waits for the server.
class WatchConnection
{
public:
    /// Whether there is a server to talk to: the toolkit ends the process where it finds none.
    static bool hasServer();

    using EventHandler = std::function<void(const xcb_generic_event_t &)>;

    WatchConnection();
    ~WatchConnection();
    WatchConnection(const WatchConnection &) = delete;
    WatchConnection &operator=(const WatchConnection &) = delete;

    /// Whether there is a server, with all the extensions in the versions that
    /// watching needs. False for good once the connection has broken.
    bool isUsable() const { return m_usable; }
    xcb_connection_t *xcb() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    uint8_t inputOpcode() const { return m_inputOpcode; }
    uint8_t fixesFirstEvent() const { return m_fixesFirstEvent; }

    void addEventHandler(EventHandler handler) { m_handlers.push_back(std::move(handler)); }
    /// Called once, when the connection has broken and every reply was called off.
    void addBreakHandler(std::function<void()> handler)
    {
        m_breakHandlers.push_back(std::move(handler));
    }

    /// Hands over the reply to that request, or null where the server reported
    /// an error or goes away meanwhile.
    template<typename Reply, typename Cookie>
    void whenAnswered(Cookie cookie, std::function<void(const Reply *)> handler)
    {
        if (!m_usable)
            return;
        m_pending.push_back({ cookie.sequence, [handler = std::move(handler)](const void *reply) {
                                 handler(static_cast<const Reply *>(reply));
                             } });
    }

    /// Waits for the server until nothing that was asked is open any more, nor what
    /// its answers made us ask. Events wait meanwhile.
    void settle();

    /// The id of the process to which a window belongs, 0 where that is unknown.
    void whenProcessKnown(xcb_window_t window, std::function<void(qint64)> handler);
    /// The same, waiting for the server.
    qint64 processOf(xcb_window_t window) const;

private:
    struct Pending
    {
        unsigned sequence;
        std::function<void(const void *)> handler;
    };

    bool connect();
    bool hasExtensions();
    void readSocket();
    void handleQueued();
    bool dispatchQueued();
    void dispatch(Xcb::Owned<xcb_generic_event_t> event);
    void answerFirst(const void *reply);
    void checkAlive();

    xcb_connection_t *m_connection = nullptr;
    bool m_usable = false;
    xcb_window_t m_root = XCB_NONE;
    uint8_t m_inputOpcode = 0;
    uint8_t m_fixesFirstEvent = 0;
    std::vector<EventHandler> m_handlers;
    std::vector<std::function<void()>> m_breakHandlers;
    std::deque<Pending> m_pending;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QObject m_context; // Ends the connections to the event loop with us.
};
