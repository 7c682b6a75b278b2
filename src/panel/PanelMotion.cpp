#include "panel/PanelMotion.h"

#include <utility>

PanelMotion::PanelMotion(PanelWindow &window, MainQueue &queue)
    : m_window(window)
    , m_animation(queue)
{
}

void PanelMotion::appear(const QPointF &from, double duration)
{
    m_shown = true;
    m_animation.cancel();
    if (!moves()) {
        setAppearance(1, {});
        m_window.orderFront();
        return;
    }
    if (!m_window.isVisible())
        setAppearance(0, from);
    m_window.orderFront();
    m_animation.begin(duration, AnimationCurve::EaseOut,
                      [this, opacity = m_opacity, slide = m_slide](double progress) {
                          setAppearance(opacity + (1 - opacity) * progress, slide * (1 - progress));
                      });
}

void PanelMotion::leave(const QPointF &to, double duration, std::function<void()> done)
{
    leaveTowards(m_window.frame(), to, duration, std::move(done));
}

void PanelMotion::leaveTowards(const QRectF &frame, const QPointF &to, double duration,
                               std::function<void()> done)
{
    m_shown = false;
    m_animation.cancel();
    auto finish = [this, done = std::move(done)] {
        vanish();
        if (done)
            done();
    };
    if (!moves()) {
        finish();
        return;
    }
    const QPointF start = m_window.frame().topLeft();
    const QPointF way = frame.topLeft() - start;
    const auto step = [=, this, opacity = m_opacity, slide = m_slide](double progress) {
        if (!way.isNull())
            m_window.setFrame({ start + way * progress, m_window.frame().size() });
        setAppearance(opacity * (1 - progress), slide + (to - slide) * progress);
    };
    m_animation.begin(duration, AnimationCurve::EaseIn, step, std::move(finish));
}

void PanelMotion::vanish()
{
    m_shown = false;
    m_animation.cancel();
    m_window.orderOut();
    setAppearance(1, {}); // The next time starts from a clean value.
}

void PanelMotion::setAppearance(double opacity, const QPointF &slide)
{
    m_opacity = opacity;
    m_slide = slide;
    m_window.setOpacity(opacity);
    m_window.setSlide(slide);
}
