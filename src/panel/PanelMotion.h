#pragma once

#include "panel/Animation.h"
#include "platform/Motion.h"
#include "platform/PanelWindow.h"

#include <QPointF>
#include <QRectF>

#include <functional>

/// How the panel comes and goes: it fades while its contents slide. Each move
/// cancels the one that runs, its completion included. Without a compositor, and
/// where the user wants nothing to move, it comes and goes at once. Main thread.
class PanelMotion
{
public:
    PanelMotion(PanelWindow &window, MainQueue &queue);

    void setMotion(Motion motion) { m_motion = motion; }

    /// Whether it is up and meant to stay; a panel that is fading out is not.
    bool isShown() const { return m_shown; }

    /// Slides in from that many points beside its place. One that is still fading
    /// out comes back from where it is.
    void appear(const QPointF &from, double duration);
    /// Slides out by that many points. done follows when the window has gone.
    void leave(const QPointF &to, double duration, std::function<void()> done = {});
    /// The same, while the window itself moves to that frame.
    void leaveTowards(const QRectF &frame, const QPointF &to, double duration,
                      std::function<void()> done);
    /// Takes it away without a motion.
    void vanish();

private:
    bool moves() const { return m_motion == Motion::Full && m_window.canFade(); }
    void setAppearance(double opacity, const QPointF &slide);

    PanelWindow &m_window;
    Animation m_animation;
    Motion m_motion = Motion::Full;
    bool m_shown = false;
    double m_opacity = 1;
    QPointF m_slide; // Of the contents, from their place.
};
