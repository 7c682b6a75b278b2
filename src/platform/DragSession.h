#pragma once

#include "platform/Address.h"

#include <QIcon>
#include <QList>
#include <QRectF>
#include <QUrl>

#include <functional>

class QWidget;

/// One dragged object and where its icon stands when the drag begins, in points
/// of the window from which it is dragged.
struct DraggingItem
{
    Address url;
    QIcon icon;
    QRectF frame;
};

/// A drag from a window of ours into other programs. Only copying is offered.
/// The window that it came from refuses it.
class DragSession
{
public:
    virtual ~DragSession() = default;
    /// Starts the drag for the press that is being handled, at that point of the
    /// window, and returns at once. Calls onEnd once, with whether a target took it; a target that
    /// has not said so 10 seconds after the release has not.
    virtual void begin(const QList<DraggingItem> &items, const QPointF &at,
                       std::function<void(bool accepted)> onEnd)
        = 0;
    /// The same from a widget of another window than the panel: the panel takes
    /// such a drag like one of another program.
    virtual void beginFrom(QWidget &source, const QList<DraggingItem> &items, const QPointF &at,
                           std::function<void(bool accepted)> onEnd)
        = 0;
};
