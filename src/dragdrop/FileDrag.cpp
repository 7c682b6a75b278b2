#include "dragdrop/FileDrag.h"

#include "platform/Icons.h"

#include <QLineF>

namespace {

constexpr double dragDistance = 3; // Points from the press to where a drag begins.
constexpr double iconSize = 40; // Points.
constexpr double fanStep = 4; // Points from one icon of the fan to the next.
constexpr qsizetype drawnIcons = 8; // The rest of a long list hides behind these.

bool isDrag(const QPointF &from, const QPointF &to)
{
    return QLineF(from, to).length() >= dragDistance;
}

}

void FileDrag::begin(const QList<Address> &urls, DragSession &session, Icons &icons,
                     const QPointF &at, std::function<void(bool)> onEnd)
{
    if (urls.isEmpty())
        return;
    QList<DraggingItem> items;
    items.reserve(urls.size());
    for (const Address &url : urls) {
        const auto i = items.size();
        QIcon icon;
        if (i < drawnIcons)
            icon = url.isLocalFile() ? icons.forFile(url) : icons.forWebLocation();
        const auto fan = fanStep * static_cast<double>(i);
        const QRectF frame(at.x() - iconSize / 2 + fan, at.y() - iconSize / 2 + fan, iconSize,
                           iconSize);
        items.append({ url, icon, frame });
    }
    session.begin(items, at, std::move(onEnd));
}

RowDrag::RowDrag(DragSession &session, Icons &icons)
    : m_session(session)
    , m_icons(icons)
{
}

bool RowDrag::routeRowDrag(WindowButtonEvent event, const QPointF &location)
{
    switch (event) {
    case WindowButtonEvent::LeftDown:
        m_pressPoint = location;
        m_dragStarted = false;
        if (beginPress)
            beginPress();
        return false;
    case WindowButtonEvent::LeftDragged:
        return dragged(location);
    case WindowButtonEvent::LeftUp:
        break;
    }
    m_dragStarted = false;
    return false;
}

bool RowDrag::dragged(const QPointF &location)
{
    if (m_dragStarted)
        return true;
    const auto urls = dragURLs ? dragURLs() : std::nullopt;
    if (!urls)
        return false;
    if (!isDrag(m_pressPoint, location))
        return true;
    m_dragStarted = true;
    if (onBegan)
        onBegan();
    FileDrag::begin(*urls, m_session, m_icons, m_pressPoint,
                    [this, alive = std::weak_ptr(m_alive), urls = *urls](bool accepted) {
                        if (accepted && alive.lock() && onDraggedOut)
                            onDraggedOut(urls);
                    });
    return true;
}

HandleDrag::HandleDrag(DragSession &session, Icons &icons)
    : m_session(session)
    , m_icons(icons)
{
}

void HandleDrag::mouseDown(const QPointF &location)
{
    m_downPoint = location;
}

void HandleDrag::mouseDragged(const QPointF &location)
{
    if (!m_downPoint || !isDrag(*m_downPoint, location))
        return;
    const QPointF at = *m_downPoint;
    m_downPoint.reset();
    const QList<Address> list = urls ? urls() : QList<Address>();
    FileDrag::begin(list, m_session, m_icons, at,
                    [this, alive = std::weak_ptr(m_alive), list](bool accepted) {
                        if (accepted && alive.lock() && onDraggedOut)
                            onDraggedOut(list);
                    });
}

void HandleDrag::mouseUp()
{
    m_downPoint.reset();
}
