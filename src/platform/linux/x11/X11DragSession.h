#pragma once

#include "base/Ticket.h"
#include "platform/DragSession.h"
#include "platform/linux/PortalFiles.h"
#include "platform/linux/x11/DragOffer.h"
#include "platform/linux/x11/X11Compositor.h"
#include "platform/linux/x11/Xcb.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QPointer>
#include <QRegion>
#include <QWidget>

#include <memory>
#include <optional>

class MainQueue;
class Workers;

/// Drags from one window. The toolkit moves the picture and finds the targets;
/// what they are offered, what they get and whether they took it is settled here.
class X11DragSession final : public DragSession, private QAbstractNativeEventFilter
{
public:
    X11DragSession(QWidget &window, MainQueue &queue, Workers &workers);
    ~X11DragSession() override;

    /// Returns when the button has been released: the toolkit runs the pointer's
    /// events of a drag in a loop of its own.
    void begin(const QList<DraggingItem> &items, const QPointF &at,
               std::function<void(bool accepted)> onEnd) override;
    void beginFrom(QWidget &source, const QList<DraggingItem> &items, const QPointF &at,
                   std::function<void(bool accepted)> onEnd) override;

private:
    enum class State {
        Idle,
        Starting, // The toolkit has announced the drag with types of its own choice.
        Dragging,
        Dropped, // The target has not said yet whether it took it.
    };

    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    bool answerRequest(const xcb_selection_request_event_t &request);
    void handleMessage(const xcb_client_message_event_t &message);
    void announceTypes();
    void shapePicture();
    bool isTaken(const quint32 *data);
    void end(bool accepted);

    QPointer<QWidget> m_window;
    MainQueue &m_queue;
    Workers &m_workers;
    xcb_connection_t *m_connection;
    Xcb::Atoms m_atoms;
    X11Compositor m_compositor;
    PortalFiles m_portal;

    State m_state = State::Idle;
    QRegion m_shape; // Of the picture.
    QWindowList m_windowsBefore; // Without the one that shows the picture.
    std::unique_ptr<DragOffer> m_offer; // Stays after the drag: targets read on.
    xcb_window_t m_target = Xcb::none; // The last one that answered the drag.
    std::optional<bool> m_taken; // What the target said.
    std::function<void(bool)> m_onEnd;
    Ticket m_limit;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
