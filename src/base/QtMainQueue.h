#pragma once

#include "base/MainQueue.h"

#include <QObject>

#include <deque>
#include <mutex>

/// The queue of a running Qt event loop; made on the main thread.
class QtMainQueue final : public MainQueue
{
public:
    double uptime() const override;
    double now() const override;
    void post(std::function<void()> task) override;
    [[nodiscard]] Ticket after(double seconds, std::function<void()> task,
                               Precision precision = Precision::Exact) override;
    [[nodiscard]] Ticket every(double seconds, std::function<void()> task,
                               Precision precision = Precision::Exact) override;

private:
    /// Lives in the main thread: where posted tasks run, one an event. They change hands under a
    /// lock of ours, which tools that look for races see; those of the toolkit they do not.
    class Posted final : public QObject
    {
    public:
        void add(std::function<void()> task);

    private:
        bool event(QEvent *event) override;

        std::mutex m_mutex;
        std::deque<std::function<void()>> m_tasks;
    };

    Posted m_posted;
};
