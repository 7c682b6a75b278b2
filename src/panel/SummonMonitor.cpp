#include "panel/SummonMonitor.h"

#include "base/MainQueue.h"
#include "platform/DragSelection.h"
#include "platform/FrontApplication.h"
#include "platform/Screens.h"

#include <QList>
#include <QRectF>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double cornerSize = 6; // Points.
constexpr double cornerPause = 1; // Seconds between two firings of the corner gesture.
constexpr double dragDistance = 4; // Points.

}

SummonMonitor::SummonMonitor(PointerMonitor &pointer, DragSelection &selection,
                             FrontApplication &front, const Screens &screens, MainQueue &queue)
    : m_pointer(pointer)
    , m_selection(selection)
    , m_front(front)
    , m_screens(screens)
    , m_queue(queue)
    , m_dragBaselineChange(selection.changeCount())
{
}

SummonMonitor::~SummonMonitor()
{
    stop();
}

void SummonMonitor::start()
{
    stop();
    m_monitor = m_pointer.watch([this](PointerEvent event) { handle(event); });
    if (!m_monitor)
        return;
    // The source answers while the pointer may already rest: nothing would come
    // any more that makes us look again.
    m_selection.onAnswer = [this] { handle(PointerEvent::LeftDragged); };
}

void SummonMonitor::stop()
{
    if (!m_monitor)
        return;
    m_selection.onAnswer = nullptr;
    m_frontState = Front::Unknown;
    m_identifying.reset();
    m_monitor.reset();
}

void SummonMonitor::handle(PointerEvent event)
{
    const auto at = m_pointer.location();
    switch (event) {
    case PointerEvent::LeftDown:
        press(at);
        return;
    case PointerEvent::LeftUp:
        endDrag();
        m_downLocation.reset();
        return;
    case PointerEvent::Moved:
        if ((m_pointer.pressedButtons() & 1) == 0)
            return;
        break;
    case PointerEvent::LeftDragged:
        break;
    }
    if (!m_dragActive && m_downLocation && at)
        judge(*at);
}

void SummonMonitor::press(const std::optional<QPointF> &at)
{
    endDrag(); // A release that never reached us.
    m_dragBaselineChange = m_selection.changeCount();
    m_downLocation = at;
    m_dragIgnored = false;
    m_frontState = Front::Unknown;
    m_identifying.reset();
}

void SummonMonitor::endDrag()
{
    if (!m_dragActive)
        return;
    m_dragActive = false;
    emit(&SummonMonitor::onDragEnd);
}

/// The cheap tests come first: this runs for every movement of a press.
void SummonMonitor::judge(const QPointF &at)
{
    if (!judgeCorner(at))
        judgeDrag(at);
}

bool SummonMonitor::judgeCorner(const QPointF &at)
{
    const double now = m_queue.uptime();
    if (!cornerEnabled || !(now - m_lastFire > cornerPause) || !inCorner(at) || !isNewFileDrag())
        return false;
    m_lastFire = now;
    begin();
    return true;
}

bool SummonMonitor::inCorner(const QPointF &at) const
{
    const auto screens = m_screens.all();
    return std::any_of(screens.begin(), screens.end(), [&at](const Screen &screen) {
        return screen.holds(at) && screen.frame.right() - cornerSize < at.x()
            && at.y() < screen.frame.top() + cornerSize;
    });
}

void SummonMonitor::judgeDrag(const QPointF &at)
{
    if (!dragEnabled || m_dragIgnored)
        return;
    const QPointF way = at - *m_downLocation;
    if (std::hypot(way.x(), way.y()) < dragDistance || !isNewFileDrag())
        return;
    if (mayBeIgnored())
        return;
    // Nothing is given up here: the modifier may still be pressed during the drag, and another
    // application may have come to the front by then.
    if (requiredModifier != 0
        && (m_pointer.modifiers() & requiredModifier & EventModifier::All) != requiredModifier) {
        m_frontState = Front::Unknown;
        return;
    }
    begin();
}

bool SummonMonitor::isNewFileDrag() const
{
    return m_selection.changeCount() != m_dragBaselineChange && m_selection.holdsFileUrls();
}

/// Telling the front application costs more than all the rest, so it is asked about
/// last. That it is ignored holds for the whole press, whoever comes to the front during it.
bool SummonMonitor::mayBeIgnored()
{
    if (ignoredBundleIDs.isEmpty() || m_frontState == Front::Told)
        return false;
    if (std::exchange(m_frontState, Front::Asked) == Front::Asked)
        return true;
    m_identifying = m_front.identify([this](const QString &identifier) {
        m_frontState = Front::Told;
        m_dragIgnored = !identifier.isEmpty() && ignoredBundleIDs.contains(identifier);
        handle(PointerEvent::LeftDragged); // The pointer may rest by now.
    });
    return true;
}

void SummonMonitor::begin()
{
    m_dragActive = true;
    emit(&SummonMonitor::onDragStart);
}

void SummonMonitor::emit(std::function<void()> SummonMonitor::*callback)
{
    m_queue.post([this, alive = std::weak_ptr(m_alive), callback] {
        if (alive.expired())
            return;
        // A copy: the callee may put another in its place, or end us.
        if (const auto call = this->*callback)
            call();
    });
}
