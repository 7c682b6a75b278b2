#pragma once

#include <functional>

enum class WorkerPriority { Utility, UserInitiated };

/// Threads for what the main thread must not wait for. Work gets copies of what
/// it needs and hands its result to MainQueue::post.
class Workers
{
public:
    virtual ~Workers() = default;
    virtual void run(WorkerPriority priority, std::function<void()> work) = 0;
};
