#pragma once

#include <QByteArray>

#include <functional>
#include <utility>

enum class WorkerPriority { Utility, UserInitiated };

/// Threads for what the main thread must not wait for. Work gets copies of what
/// it needs and hands its result to MainQueue::post.
class Workers
{
public:
    virtual ~Workers() = default;
    /// For what computes, or touches the program's own files.
    virtual void run(WorkerPriority priority, std::function<void()> work) = 0;
    /// For what touches that file of the user's. A disk that never answers holds up
    /// only what goes to the same one.
    virtual void runAt(const QByteArray &, std::function<void()> work)
    {
        run(WorkerPriority::UserInitiated, std::move(work));
    }
};
