#pragma once

#include "platform/DragSelection.h"
#include "platform/PointerMonitor.h"

#include <QList>

#include <functional>
#include <memory>

class MainQueue;
class WatchConnection;
class X11DragSelection;
class X11PointerMonitor;

/// Watches the pointer and the drags of the whole session. Where the X server
/// cannot, or is gone, it stays silent.
class X11Watch
{
public:
    explicit X11Watch(MainQueue &queue);
    ~X11Watch();
    X11Watch(const X11Watch &) = delete;
    X11Watch &operator=(const X11Watch &) = delete;

    PointerMonitor &pointer();
    DragSelection &dragSelection();

    /// Asked at each release: whether a drag of another program hovers over a
    /// window of ours, or its drop is still landing there. The release is then
    /// delivered when releaseGateOpened() is called, after 15 seconds at most.
    void setReleaseGate(std::function<bool()> dropIsLanding);
    void releaseGateOpened();

    /// The processes that the user may be working in, the likeliest first: the
    /// active window's, then the one that announced the last drag. Neither is
    /// this one. Waits for the X server.
    QList<qint64> frontProcesses() const;

private:
    std::unique_ptr<WatchConnection> m_connection; // Outlives what works over it.
    std::unique_ptr<X11PointerMonitor> m_pointer;
    std::unique_ptr<X11DragSelection> m_dragSelection;
    quint32 m_activeWindow; // Atom.
};
