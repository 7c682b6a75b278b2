#pragma once

#include "base/MainQueue.h"
#include "base/Workers.h"

#include <QByteArrayList>

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

/// A queue whose time stands still until a test moves it. Runs posted tasks and
/// timers in order of their moment, each at its own time.
class VirtualQueue final : public MainQueue
{
public:
    double uptime() const override { return m_time; }
    double now() const override { return 785000000 + m_time; }

    void post(std::function<void()> task) override { add(m_time, std::move(task)); }

    [[nodiscard]] Ticket after(double seconds, std::function<void()> task, Precision) override
    {
        auto ticket = std::make_shared<int>(0);
        add(m_time + seconds, [weak = std::weak_ptr(ticket), task = std::move(task)] {
            if (weak.lock())
                task();
        });
        return ticket;
    }

    [[nodiscard]] Ticket every(double seconds, std::function<void()> task, Precision) override
    {
        auto ticket = std::make_shared<int>(0);
        repeat(m_time + seconds, seconds, ticket, std::move(task));
        return ticket;
    }

    /// Lets that many seconds pass.
    void advance(double seconds)
    {
        const double end = m_time + seconds;
        while (!m_tasks.empty() && m_tasks.begin()->first <= end) {
            auto first = m_tasks.begin();
            m_time = std::max(m_time, first->first);
            const auto task = std::move(first->second);
            m_tasks.erase(first);
            task();
        }
        m_time = end;
    }

    /// Runs what is due now, and what that posts.
    void settle() { advance(0); }

private:
    void add(double when, std::function<void()> task) { m_tasks.emplace(when, std::move(task)); }

    void repeat(double when, double seconds, const std::weak_ptr<int> &ticket,
                std::function<void()> task)
    {
        add(when, [this, when, seconds, ticket, task = std::move(task)] {
            if (!ticket.lock())
                return;
            task();
            repeat(when + seconds, seconds, ticket, task);
        });
    }

    double m_time = 1000; // Not 0, so that "never" and "now" differ as they do on a real machine.
    std::multimap<double, std::function<void()>> m_tasks;
};

/// Work runs when the virtual queue gets to it, after what was posted before.
class VirtualWorkers final : public Workers
{
public:
    explicit VirtualWorkers(MainQueue &queue)
        : m_queue(queue)
    {
    }
    void run(WorkerPriority, std::function<void()> work) override { m_queue.post(std::move(work)); }
    void runAt(const QByteArray &path, std::function<void()> work) override
    {
        places.append(path);
        m_queue.post(std::move(work));
    }

    QByteArrayList places; // Whose disks work was sent to.

private:
    MainQueue &m_queue;
};
