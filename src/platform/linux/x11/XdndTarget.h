#pragma once

#include "base/Ticket.h"
#include "platform/DropTarget.h"
#include "platform/linux/x11/DropReading.h"
#include "platform/linux/x11/Xcb.h"

#include <QAbstractNativeEventFilter>
#include <QWidget>

#include <list>
#include <optional>

class MainQueue;

/// The receiving side of XDND for one top-level window, in place of the
/// toolkit's, which would read drops on the main thread. Speaks versions 3 to 5
/// of the protocol. No widget in the window may accept drops. What another
/// window of this program drags lands like anything else; its own drags never come here. While
/// nobody takes drops (onDrop is empty), drags are told that they may, but a drop ends not
/// accepted.
class XdndTarget final : public DropTarget, private QAbstractNativeEventFilter
{
public:
    /// Made and destroyed before the queue is.
    explicit XdndTarget(MainQueue &queue);
    ~XdndTarget() override;

    /// The window; again whenever it has a new native one.
    void attach(WId window);

    /// Whether a drag that would be taken is over the window, or a drop has not ended.
    bool isLanding() const { return (m_hover && m_hover->isTargeted) || !m_drops.empty(); }
    /// isLanding() has become false.
    std::function<void()> onLandingEnded;

private:
    /// The drag that is over the window.
    struct Hover
    {
        xcb_window_t source = Xcb::none;
        QStringList types;
        bool isWanted = false; // By its types.
        xcb_atom_t requested = Xcb::none;
        xcb_atom_t action = Xcb::none; // What it is answered with; none refuses.
        bool isTargeted = false;
    };
    /// A drop that is being read.
    struct Drop
    {
        xcb_window_t source = Xcb::none;
        xcb_window_t window = Xcb::none;
        xcb_atom_t action = Xcb::none;
        std::shared_ptr<DropReading> reading;
        Ticket deadline;
    };

    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    bool handleMessage(const xcb_client_message_event_t &message);
    void enter(const quint32 *data);
    void position(const quint32 *data);
    void drop(const quint32 *data);
    void sourceGone(xcb_window_t source);

    QStringList offeredTypes(const quint32 *data);
    xcb_atom_t chosenAction(xcb_atom_t requested);
    void setTargeted(bool targeted);
    void endHover();
    bool isOver(xcb_window_t source) const { return m_hover && m_hover->source == source; }
    void startReading(quint32 time);
    void endDrop(std::list<Drop>::iterator drop, DropReading::Gain gain);
    void landed();

    MainQueue &m_queue;
    xcb_connection_t *m_connection;
    Xcb::Atoms m_atoms;
    xcb_window_t m_window = Xcb::none;
    std::optional<Hover> m_hover;
    std::list<Drop> m_drops;
};
