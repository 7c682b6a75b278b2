#include "platform/linux/x11/X11FrontApplication.h"

#include "base/MainQueue.h"
#include "base/Workers.h"
#include "platform/linux/session/ApplicationResolver.h"
#include "platform/linux/x11/WatchConnection.h"

#include <utility>

#include <unistd.h>

namespace {

constexpr double patience = 0.25; // Seconds: whoever drags waits for the panel.

struct Request
{
    std::function<void(const QString &)> answer;
    Ticket limit;

    void tell(const QString &identifier)
    {
        if (const auto call = std::exchange(answer, nullptr))
            call(identifier);
    }
};

}

X11FrontApplication::X11FrontApplication(const WatchConnection &connection,
                                         std::shared_ptr<ApplicationResolver> resolver,
                                         MainQueue &queue, Workers &workers)
    : m_connection(connection)
    , m_resolver(std::move(resolver))
    , m_queue(queue)
    , m_workers(workers)
    , m_atoms(connection.xcb())
{
}

Ticket X11FrontApplication::identify(std::function<void(const QString &)> answer)
{
    QList<qint64> processes;
    if (m_connection.isUsable()) {
        for (const xcb_window_t window :
             { Xcb::property32(m_connection.xcb(), m_connection.root(),
                               m_atoms("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 1)
                   .value(0),
               Xcb::selectionOwner(m_connection.xcb(), m_atoms("XdndSelection")) }) {
            const qint64 process = window == Xcb::none ? 0 : m_connection.processOf(window);
            if (process != 0 && process != ::getpid())
                processes.append(process);
        }
    }
    const auto request = std::make_shared<Request>(Request { std::move(answer), {} });
    const auto tell = [weak = std::weak_ptr(request)](const QString &identifier) {
        if (const auto waiting = weak.lock())
            waiting->tell(identifier);
    };
    request->limit = m_queue.after(patience, [tell] { tell(QString()); });
    m_workers.runAt("/proc", [tell, processes, resolver = m_resolver, &queue = m_queue] {
        QString identifier;
        for (qsizetype i = 0; i < processes.size() && identifier.isEmpty(); ++i)
            identifier = resolver->identifier(processes[i]);
        queue.post([tell, identifier] { tell(identifier); });
    });
    return request;
}
