#pragma once

#include "base/Ticket.h"

#include <functional>

class MainQueue;

/// The time of a picture that moves over and over. It runs only while somebody
/// can see the picture: nothing wakes up for one that is hidden. Main thread.
class LoopClock
{
public:
    /// onTick: about sixty times a second.
    LoopClock(MainQueue &queue, std::function<void()> onTick);

    /// Begins at zero.
    void start();
    void stop();
    bool isRunning() const { return m_timer != nullptr; }
    /// Seconds since the start, within one round of that many seconds.
    double time(double period) const;

private:
    MainQueue &m_queue;
    std::function<void()> m_onTick;
    double m_start = 0;
    Ticket m_timer;
};
