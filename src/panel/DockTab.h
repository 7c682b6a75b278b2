#pragma once

#include "base/MainQueue.h"
#include "base/Observable.h"
#include "panel/Animation.h"
#include "platform/Motion.h"
#include "platform/Screens.h"
#include "platform/TabWindow.h"

#include <functional>

/// What the tab's view shows besides the shelf's count.
struct DockTabModel
{
    Observable<DockEdge> edge { DockEdge::Right };
};

/// The small tab at a screen's edge that stands for the docked panel: when it
/// shows, where, and what activates it. Main thread.
class DockTab
{
public:
    DockTab(TabWindow &window, MainQueue &queue);
    ~DockTab();
    DockTab(const DockTab &) = delete;
    DockTab &operator=(const DockTab &) = delete;

    /// The pointer stayed on it for a moment, pressed it, or dragged something onto it.
    std::function<void()> onActivate;
    DockTabModel model;
    void setMotion(Motion motion) { m_motion = motion; }

    /// Fades it in at that edge of the screen's visible frame, at the height of
    /// centerY as far as it fits.
    void show(DockEdge edge, const Screen &screen, double centerY);
    void place(DockEdge edge, const Screen &screen, double centerY);
    /// Fades it out. A show that comes meanwhile keeps it up.
    void dismiss();

private:
    bool fades() const { return m_motion == Motion::Full && m_window.canFade(); }
    void fire();

    TabWindow &m_window;
    MainQueue &m_queue;
    Animation m_fade;
    Motion m_motion = Motion::Full;
    double m_opacity = 1;
    bool m_wanted = false; // It is meant to be on screen.
    Ticket m_hoverTimer;
};
