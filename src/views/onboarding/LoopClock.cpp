#include "views/onboarding/LoopClock.h"

#include "base/MainQueue.h"

#include <cmath>

namespace {
constexpr double framePeriod = 1.0 / 60;
}

LoopClock::LoopClock(MainQueue &queue, std::function<void()> onTick)
    : m_queue(queue)
    , m_onTick(std::move(onTick))
{
}

void LoopClock::start()
{
    m_start = m_queue.uptime();
    m_timer = m_queue.every(framePeriod, m_onTick);
}

void LoopClock::stop()
{
    m_timer.reset();
}

double LoopClock::time(double period) const
{
    return std::fmod(m_queue.uptime() - m_start, period);
}
