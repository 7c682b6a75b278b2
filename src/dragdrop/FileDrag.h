#pragma once

#include "base/Ticket.h"
#include "platform/DragSession.h"
#include "platform/PanelWindow.h"

#include <QList>
#include <QPointF>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

class Icons;

namespace FileDrag {

/// Drags these addresses out of the window, from a press at that point of it.
/// onEnd gets whether a target took them. Does nothing without an address.
void begin(const QList<Address> &urls, DragSession &session, Icons &icons, const QPointF &at,
           std::function<void(bool accepted)> onEnd);

}

/// Turns a press on a row that is dragged on into a drag out of the panel. It
/// sees each left-button event of the panel before the views do; a row only
/// tells which entry was pressed. Points are those of the window.
class RowDrag
{
public:
    RowDrag(DragSession &session, Icons &icons);

    /// Whether the event is consumed and must not reach the views.
    bool routeRowDrag(WindowButtonEvent event, const QPointF &location);

    std::function<void()> beginPress; // Forgets the row of the press before.
    std::function<std::optional<QList<Address>>()> dragURLs; // None while no row is pressed.
    std::function<void()> onBegan; // The press has become a drag, and is no click any more.
    std::function<void(const QList<Address> &)> onDraggedOut; // Only what a target took.

private:
    bool dragged(const QPointF &location);

    DragSession &m_session;
    Icons &m_icons;
    QPointF m_pressPoint;
    bool m_dragStarted = false; // A drag owns the pointer until the next press or release.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // A drag may end after its panel.
};

/// The handle that drags a whole selection: what it does with its presses and
/// moves. Points are those of the window.
class HandleDrag
{
public:
    HandleDrag(DragSession &session, Icons &icons);

    void mouseDown(const QPointF &location);
    void mouseDragged(const QPointF &location);
    void mouseUp();

    std::function<QList<Address>()> urls;
    std::function<void(const QList<Address> &)> onDraggedOut;

private:
    DragSession &m_session;
    Icons &m_icons;
    std::optional<QPointF> m_downPoint; // The press that may become a drag.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
