#include "panel/Animation.h"

#include <QEasingCurve>
#include <QPointF>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace {

constexpr double stepInterval = 1.0 / 60; // Seconds.

/// A damped spring whose response time is the duration.
double spring(double progress)
{
    if (progress >= 1)
        return 1;
    constexpr double damping = 0.85;
    constexpr double omega = 2 * std::numbers::pi;
    const double swing = omega * std::sqrt(1 - damping * damping);
    const double decay = std::exp(-damping * omega * progress);
    const double slope = damping * omega / swing;
    return 1 - decay * (std::cos(swing * progress) + slope * std::sin(swing * progress));
}

QEasingCurve easing(AnimationCurve curve)
{
    if (curve == AnimationCurve::Spring) {
        QEasingCurve custom;
        custom.setCustomType(spring);
        return custom;
    }
    QEasingCurve bezier(QEasingCurve::BezierSpline);
    if (curve == AnimationCurve::EaseIn)
        bezier.addCubicBezierSegment({ 0.42, 0 }, { 1, 1 }, { 1, 1 });
    else
        bezier.addCubicBezierSegment({ 0, 0 }, { 0.58, 1 }, { 1, 1 });
    return bezier;
}

}

struct Animation::Run
{
    double start;
    double duration;
    QEasingCurve curve;
    std::function<void(double)> step;
    std::function<void()> done;
    Ticket timer;
};

Animation::Animation(MainQueue &queue)
    : m_queue(queue)
{
}

void Animation::begin(double duration, AnimationCurve curve, std::function<void(double)> step,
                      std::function<void()> done)
{
    const auto run = std::make_shared<Run>(
        Run { m_queue.uptime(), duration, easing(curve), std::move(step), std::move(done), {} });
    run->timer = m_queue.every(stepInterval, [this, weak = std::weak_ptr(run)] {
        if (const auto current = weak.lock())
            tick(current);
    });
    m_run = run;
}

void Animation::cancel()
{
    m_run.reset();
}

/// `run` is held by the caller: a step may cancel the animation or begin the next.
void Animation::tick(const std::shared_ptr<Run> &run)
{
    const double progress = std::min(1.0, (m_queue.uptime() - run->start) / run->duration);
    const bool ended = progress >= 1;
    if (ended)
        m_run.reset();
    run->step(run->curve.valueForProgress(progress));
    if (ended && run->done && !m_run)
        run->done();
}
