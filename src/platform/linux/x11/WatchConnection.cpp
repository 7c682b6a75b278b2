#include "platform/linux/x11/WatchConnection.h"

#include "platform/linux/x11/X11Root.h"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <xcb/res.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <optional>
#include <utility>

namespace {

struct Opened
{
    int screen = 0;
    xcb_connection_t *connection = xcb_connect(nullptr, &screen);
};

/// That has found out whether there is a server, for the first that needs one.
std::optional<Opened> &spare()
{
    static std::optional<Opened> opened;
    return opened;
}

template<typename Reply>
bool isAtLeast(const Reply *reply, unsigned major, unsigned minor)
{
    return reply != nullptr
        && std::pair<unsigned, unsigned>(reply->major_version, reply->minor_version)
        >= std::pair(major, minor);
}

qint64 processIn(const xcb_res_query_client_ids_reply_t *reply)
{
    if (!reply)
        return 0;
    auto ids = xcb_res_query_client_ids_ids_iterator(reply);
    for (; ids.rem > 0; xcb_res_client_id_value_next(&ids)) {
        if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0
            && xcb_res_client_id_value_value_length(ids.data) > 0)
            return *xcb_res_client_id_value_value(ids.data);
    }
    return 0;
}

xcb_res_query_client_ids_cookie_t askProcess(xcb_connection_t *connection, xcb_window_t window)
{
    const xcb_res_client_id_spec_t spec { window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID };
    return xcb_res_query_client_ids(connection, 1, &spec);
}

}

WatchConnection::WatchConnection()
{
    m_usable = connect() && hasExtensions();
    if (!m_usable)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection),
                                                   QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_context,
                     [this] { readSocket(); });
    // Whoever waited for a reply has read what came before it off the socket,
    // which then stays silent about it.
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                     &m_context, [this] { handleQueued(); });
}

WatchConnection::~WatchConnection()
{
    m_notifier.reset(); // Before its descriptor is closed.
    xcb_disconnect(m_connection);
}

bool WatchConnection::hasServer()
{
    spare() = Opened();
    return xcb_connection_has_error(spare()->connection) == 0;
}

bool WatchConnection::connect()
{
    const Opened opened = spare() ? *std::exchange(spare(), std::nullopt) : Opened();
    m_connection = opened.connection;
    if (xcb_connection_has_error(m_connection) != 0)
        return false;
    m_root = X11Root::ofScreen(m_connection, opened.screen);
    return true;
}

bool WatchConnection::hasExtensions()
{
    xcb_prefetch_extension_data(m_connection, &xcb_input_id);
    xcb_prefetch_extension_data(m_connection, &xcb_xfixes_id);
    xcb_prefetch_extension_data(m_connection, &xcb_res_id);
    const auto *input = xcb_get_extension_data(m_connection, &xcb_input_id);
    const auto *fixes = xcb_get_extension_data(m_connection, &xcb_xfixes_id);
    const auto *resources = xcb_get_extension_data(m_connection, &xcb_res_id);
    if (!input || !input->present || !fixes || !fixes->present || !resources || !resources->present)
        return false;
    m_inputOpcode = input->major_opcode;
    m_fixesFirstEvent = fixes->first_event;

    // The server takes the version that we name for the one that we understand: only from 2.1
    // on do raw events come while another client grabs the pointer, from 2.2 on those of touches.
    const auto inputCookie = xcb_input_xi_query_version(m_connection, 2, 2);
    const auto fixesCookie = xcb_xfixes_query_version(m_connection, 5, 0);
    const auto resourcesCookie = xcb_res_query_version(m_connection, 1, 2);
    const auto inputVersion
        = Xcb::owned(xcb_input_xi_query_version_reply(m_connection, inputCookie, nullptr));
    const auto fixesVersion
        = Xcb::owned(xcb_xfixes_query_version_reply(m_connection, fixesCookie, nullptr));
    const auto resourcesVersion
        = Xcb::owned(xcb_res_query_version_reply(m_connection, resourcesCookie, nullptr));
    return isAtLeast(inputVersion.get(), 2, 2) && isAtLeast(fixesVersion.get(), 1, 0)
        && resourcesVersion
        && std::pair(resourcesVersion->server_major, resourcesVersion->server_minor)
        >= std::pair<uint16_t, uint16_t>(1, 2);
}

void WatchConnection::whenProcessKnown(xcb_window_t window, std::function<void(qint64)> handler)
{
    whenAnswered<xcb_res_query_client_ids_reply_t>(
        askProcess(m_connection, window),
        [handler = std::move(handler)](const auto *reply) { handler(processIn(reply)); });
}

qint64 WatchConnection::processOf(xcb_window_t window) const
{
    const auto reply = Xcb::owned(
        xcb_res_query_client_ids_reply(m_connection, askProcess(m_connection, window), nullptr));
    return processIn(reply.get());
}

void WatchConnection::readSocket()
{
    while (auto *event = xcb_poll_for_event(m_connection))
        dispatch(Xcb::Owned<xcb_generic_event_t>(event));
    handleQueued();
}

void WatchConnection::handleQueued()
{
    if (!m_usable)
        return;
    // Sending reads from the socket too, and so does whoever waits for a reply
    // while an event is being handled: until nothing has come that way.
    do
        xcb_flush(m_connection);
    while (dispatchQueued());
    checkAlive();
}

/// Whether there was anything.
bool WatchConnection::dispatchQueued()
{
    bool any = false;
    for (; auto *event = xcb_poll_for_queued_event(m_connection); any = true)
        dispatch(Xcb::Owned<xcb_generic_event_t>(event));
    for (; !m_pending.empty(); any = true) {
        void *reply = nullptr;
        xcb_generic_error_t *error = nullptr;
        if (xcb_poll_for_reply(m_connection, m_pending.front().sequence, &reply, &error) == 0)
            break;
        const Xcb::Owned<void> ownedReply(reply);
        const Xcb::Owned<xcb_generic_error_t> ownedError(error);
        answerFirst(reply);
    }
    return any;
}

void WatchConnection::dispatch(Xcb::Owned<xcb_generic_event_t> event)
{
    for (const auto &handler : m_handlers)
        handler(*event);
}

void WatchConnection::answerFirst(const void *reply)
{
    const auto handler = std::move(m_pending.front().handler);
    m_pending.pop_front();
    handler(reply);
}

void WatchConnection::settle()
{
    while (!m_pending.empty()) {
        xcb_generic_error_t *error = nullptr;
        const Xcb::Owned<void> reply(
            xcb_wait_for_reply(m_connection, m_pending.front().sequence, &error));
        const Xcb::Owned<xcb_generic_error_t> ownedError(error);
        answerFirst(reply.get());
    }
}

/// A broken connection's descriptor is readable for ever: it must leave the loop.
void WatchConnection::checkAlive()
{
    if (xcb_connection_has_error(m_connection) == 0)
        return;
    m_usable = false;
    m_notifier->setEnabled(false);
    for (const auto &pending : std::exchange(m_pending, {}))
        pending.handler(nullptr);
    for (const auto &handler : m_breakHandlers)
        handler();
}
