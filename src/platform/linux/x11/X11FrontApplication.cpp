#include "platform/linux/x11/X11FrontApplication.h"

#include "platform/linux/ApplicationResolver.h"
#include "platform/linux/x11/WatchConnection.h"

#include <unistd.h>

X11FrontApplication::X11FrontApplication(const WatchConnection &connection,
                                         ApplicationResolver &resolver)
    : m_connection(connection)
    , m_resolver(resolver)
{
    Xcb::Atoms atoms(connection.xcb());
    atoms.fetch({ "_NET_ACTIVE_WINDOW", "XdndSelection" });
    m_activeWindow = atoms("_NET_ACTIVE_WINDOW");
    m_dragSelection = atoms("XdndSelection");
}

QString X11FrontApplication::identifier() const
{
    if (!m_connection.isUsable())
        return {};
    const QString active = identifierOf(activeWindow());
    return active.isEmpty() ? identifierOf(Xcb::selectionOwner(m_connection.xcb(), m_dragSelection))
                            : active;
}

QString X11FrontApplication::identifierOf(xcb_window_t window) const
{
    const qint64 process = window == Xcb::none ? 0 : m_connection.processOf(window);
    return process == 0 || process == ::getpid() ? QString() : m_resolver.identifier(process);
}

xcb_window_t X11FrontApplication::activeWindow() const
{
    return Xcb::property32(m_connection.xcb(), m_connection.root(), m_activeWindow, XCB_ATOM_WINDOW,
                           1)
        .value(0);
}
