#include "views/list/RowMotion.h"

#include <algorithm>

namespace {
constexpr double motionDuration = 0.3;
}

void RowMotion::begin(Start start)
{
    m_start = std::move(start);
    m_progress = 0;
    m_running = true;
    const auto step = [this](double progress) {
        m_progress = progress;
        onFrame();
    };
    m_animation.begin(motionDuration, AnimationCurve::Spring, step, [this] { stop(); });
}

void RowMotion::stop()
{
    m_animation.cancel();
    m_start = {};
    m_progress = 1;
    m_running = false;
    onFrame();
}

double RowMotion::shift(const QUuid &id) const
{
    return m_start.shifts.value(id, 0) * (1 - m_progress);
}

double RowMotion::opacity(const QUuid &id) const
{
    const double from = m_start.opacities.value(id, 1);
    return from + (1 - from) * std::min(m_progress, 1.0);
}

/// They are gone by half of the way, before other rows take their place.
std::vector<RowMotion::Ghost> RowMotion::ghosts() const
{
    auto result = m_start.ghosts;
    for (auto &ghost : result)
        ghost.opacity *= std::max(0.0, 1 - 2 * m_progress);
    return result;
}
