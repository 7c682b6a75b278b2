#include "platform/linux/x11/X11Watch.h"

#include "platform/linux/x11/WatchConnection.h"
#include "platform/linux/x11/X11DragSelection.h"
#include "platform/linux/x11/X11PointerMonitor.h"

#include <unistd.h>

#include <utility>

X11Watch::X11Watch(MainQueue &queue)
    : m_connection(std::make_unique<WatchConnection>())
    , m_pointer(std::make_unique<X11PointerMonitor>(*m_connection, queue))
    , m_dragSelection(std::make_unique<X11DragSelection>(*m_connection, queue))
    , m_activeWindow(Xcb::Atoms(m_connection->xcb())("_NET_ACTIVE_WINDOW"))
{
}

X11Watch::~X11Watch() = default;

PointerMonitor &X11Watch::pointer()
{
    return *m_pointer;
}

DragSelection &X11Watch::dragSelection()
{
    return *m_dragSelection;
}

void X11Watch::setReleaseGate(std::function<bool()> dropIsLanding)
{
    m_pointer->setReleaseGate(std::move(dropIsLanding));
}

void X11Watch::releaseGateOpened()
{
    m_pointer->releaseGateOpened();
}

QList<qint64> X11Watch::frontProcesses() const
{
    QList<qint64> processes;
    if (m_connection->isUsable()) {
        for (const xcb_window_t window : Xcb::property32(m_connection->xcb(), m_connection->root(),
                                                         m_activeWindow, XCB_ATOM_WINDOW, 1))
            processes.append(m_connection->processOf(window));
    }
    processes.append(m_dragSelection->ownerProcess());
    processes.removeAll(0);
    processes.removeAll(::getpid());
    return processes;
}
