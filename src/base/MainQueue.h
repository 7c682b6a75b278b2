#pragma once

#include "base/Ticket.h"

#include <functional>
#include <utility>

/// The main thread's clock and queue. Production code calls no timer and reads
/// no clock but these, so that a test can move all of them together.
class MainQueue
{
public:
    virtual ~MainQueue() = default;

    /// Seconds, monotonic: gestures, animations and pauses.
    virtual double uptime() const = 0;
    /// Seconds since 2001-01-01 00:00:00 UTC, with fraction: only for what is stored.
    virtual double now() const = 0;
    /// Runs the task on the main thread, after what was posted before it. Any thread
    /// may call this one and the next, and no other.
    virtual void post(std::function<void()> task) = 0;
    /// The same, unless what `alive` stands for has gone by then.
    void postFor(std::weak_ptr<const void> alive, std::function<void()> task)
    {
        post([alive = std::move(alive), task = std::move(task)] {
            if (alive.lock())
                task();
        });
    }
    /// Runs the task once, that many seconds from now, unless the ticket was
    /// dropped before. With Precision::Coarse the desktop may let it come up to
    /// five per cent late together with others, which saves wake-ups.
    enum class Precision { Exact, Coarse };
    [[nodiscard]] virtual Ticket after(double seconds, std::function<void()> task,
                                       Precision precision = Precision::Exact)
        = 0;
    /// Runs the task again and again, until the ticket is dropped.
    [[nodiscard]] virtual Ticket every(double seconds, std::function<void()> task,
                                       Precision precision = Precision::Exact)
        = 0;
};
