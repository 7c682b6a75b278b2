#include "base/ThreadWorkers.h"

#include <utility>

ThreadWorkers::ThreadWorkers()
    : m_pool(new QThreadPool)
{
    // Work here waits for disks more than it computes: more threads than cores,
    // so that one dead network mount does not hold the others up.
    m_pool->setMaxThreadCount(8);
}

ThreadWorkers::~ThreadWorkers()
{
    m_pool->clear();
    if (m_pool->waitForDone(1000))
        delete m_pool;
}

void ThreadWorkers::run(WorkerPriority priority, std::function<void()> work)
{
    m_pool->start(std::move(work), priority == WorkerPriority::UserInitiated ? 1 : 0);
}
