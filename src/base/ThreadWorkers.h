#pragma once

#include "base/Workers.h"

#include <QThreadPool>

/// Real threads, started when needed and ended after half a minute without work.
class ThreadWorkers final : public Workers
{
public:
    ThreadWorkers();
    ~ThreadWorkers() override;

    /// Drops work that has not begun and gives the rest a second to end. False where
    /// some hangs in a dead network mount: it is left behind, with all that it uses.
    bool end();

    /// Where work with the user's files goes, by path; without it they are like all
    /// other work. Set before there is any.
    std::function<void(const QByteArray &path, std::function<void()> work)> lanes;

    void run(WorkerPriority priority, std::function<void()> work) override;
    void runAt(const QByteArray &path, std::function<void()> work) override;

private:
    QThreadPool *m_pool;
};
