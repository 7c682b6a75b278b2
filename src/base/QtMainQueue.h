#pragma once

#include "base/MainQueue.h"

#include <QObject>

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
    QObject m_context; // Lives in the main thread: where posted tasks run.
};
