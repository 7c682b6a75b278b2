#include "panel/PanelDocking.h"

#include "panel/DockTab.h"
#include "panel/PanelMotion.h"
#include "platform/PanelWindow.h"
#include "platform/PointerMonitor.h"

#include <algorithm>

namespace {

// Seconds.
constexpr double pollingPeriod = 0.25;
constexpr double idleTime = 1.2;
constexpr double activationHold = 1.0;
constexpr double switchOffHold = 3.0;
constexpr double dockDuration = 0.2;
constexpr double undockDuration = 0.22;
// Points.
constexpr double zoneMargin = 6;
constexpr double nearEdge = 40;
constexpr double zoneBeyondEdge = 2;
constexpr double homeMargin = 10;
constexpr double slideDistance = 24;

}

PanelDocking::PanelDocking(PanelWindow &window, PanelMotion &motion, Screens &screens,
                           PointerMonitor &pointer, MainQueue &queue)
    : m_window(window)
    , m_motion(motion)
    , m_screens(screens)
    , m_pointer(pointer)
    , m_queue(queue)
{
}

PanelDocking::~PanelDocking()
{
    if (!m_tab)
        return;
    m_screens.onChanged = nullptr;
    m_tab->onActivate = nullptr;
}

void PanelDocking::attach(DockTab &tab)
{
    m_tab = &tab;
    tab.onActivate = [this] { undock(activationHold); };
    m_screens.onChanged = [this] { relayout(); };
}

void PanelDocking::setEnabled(bool enabled)
{
    if (enabled == m_enabled)
        return;
    m_enabled = enabled;
    if (!enabled) {
        stopTimer();
        undock(switchOffHold);
    } else if (m_motion.isShown()) {
        startTimer();
    }
}

void PanelDocking::startTimer()
{
    if (!m_enabled || !m_tab || m_timer)
        return;
    m_timer = m_queue.every(
        pollingPeriod, [this] { check(); }, MainQueue::Precision::Coarse);
}

void PanelDocking::stopTimer()
{
    m_timer.reset();
    m_look.reset();
}

void PanelDocking::hold(double seconds)
{
    m_lastActive = m_queue.uptime();
    m_holdUntil = std::max(m_holdUntil, m_lastActive + seconds);
}

void PanelDocking::menuClosed()
{
    m_menuOpen = false;
    m_lastActive = m_queue.uptime();
}

void PanelDocking::check()
{
    if (!m_enabled || !m_motion.isShown() || m_docked)
        stopTimer();
    else
        m_look = m_pointer.look([this](const PointerMonitor::Look &look) { judge(look); });
}

void PanelDocking::judge(const PointerMonitor::Look &pointer)
{
    const double now = m_queue.uptime();
    const bool isNear = pointer.location && activeZone().contains(*pointer.location);
    if (isNear || isBusy(pointer)) {
        m_lastActive = now;
        return;
    }
    if (m_holdUntil > now || now - m_lastActive < idleTime)
        return;
    if (canDock && canDock())
        dock();
}

bool PanelDocking::isBusy(const PointerMonitor::Look &pointer) const
{
    return m_menuOpen || pointer.pressedButtons != 0 || (hasModal && hasModal())
        || (isPreviewVisible && isPreviewVisible());
}

/// The panel with a margin. Where it lies against a side of the screen, a pointer
/// that has run on to that side still belongs to it.
QRectF PanelDocking::activeZone() const
{
    const QRectF frame = m_window.frame();
    QRectF zone = frame.adjusted(-zoneMargin, -zoneMargin, zoneMargin, zoneMargin);
    if (const auto on = screen()) {
        const QRectF &visible = on->visibleFrame;
        if (visible.right() - frame.right() < nearEdge)
            zone.setRight(std::max(zone.right(), visible.right() + zoneBeyondEdge));
        if (frame.left() - visible.left() < nearEdge)
            zone.setLeft(std::min(zone.left(), visible.left() - zoneBeyondEdge));
    }
    return zone;
}

std::optional<Screen> PanelDocking::screen() const
{
    const auto showing = m_screens.showing(m_window.frame());
    return showing ? showing : m_screens.main();
}

/// At the edge, at the frame's height as long as it fits; else its head is what
/// stays inside.
QRectF PanelDocking::homeOn(const Screen &screen, const QRectF &frame) const
{
    const QRectF &visible = screen.visibleFrame;
    const double x = m_edge == DockEdge::Right ? visible.right() - frame.width() - homeMargin
                                               : visible.left() + homeMargin;
    const double y
        = std::max(visible.top(), std::min(frame.top(), visible.bottom() - frame.height()));
    return { QPointF(x, y), frame.size() };
}

/// How far a docking panel's contents slide on towards the edge.
QPointF PanelDocking::slide() const
{
    return { m_edge == DockEdge::Right ? slideDistance : -slideDistance, 0 };
}

void PanelDocking::dock()
{
    const auto on = screen();
    if (!m_enabled || !m_tab || m_docked || !m_motion.isShown() || !on)
        return;
    const QRectF frame = m_window.frame();
    m_docked = true;
    m_edge = on->visibleFrame.center().x() <= frame.center().x() ? DockEdge::Right : DockEdge::Left;
    const QRectF home = homeOn(*on, frame);
    m_home = home;
    stopTimer();
    m_tab->show(m_edge, *on, home.center().y());
    // The screens may have changed meanwhile, and the home with them.
    m_motion.leaveTowards(home, slide(), dockDuration, [this] { goHome(); });
}

void PanelDocking::undock(double seconds)
{
    if (!m_docked)
        return;
    m_docked = false;
    m_tab->dismiss();
    if (onWillShow)
        onWillShow();
    goHome();
    m_motion.appear(slide(), undockDuration);
    hold(seconds);
    startTimer();
}

void PanelDocking::drop()
{
    m_docked = false;
    m_tab->dismiss();
    m_motion.vanish();
    goHome();
}

void PanelDocking::goHome()
{
    m_window.setFrame(*m_home);
    if (onMoved)
        onMoved();
}

void PanelDocking::relayout()
{
    if (!m_docked)
        return;
    const auto screens = m_screens.all();
    const auto shown = std::ranges::find_if(
        screens, [this](const Screen &screen) { return screen.visibleFrame.intersects(*m_home); });
    const auto on = shown != screens.end() ? std::optional(*shown) : m_screens.main();
    if (!on)
        return;
    const QRectF home = homeOn(*on, *m_home);
    m_home = home;
    m_tab->place(m_edge, *on, home.center().y());
}
