#include "base/ThreadWorkers.h"

#include "base/HandedOver.h"

#include <utility>

ThreadWorkers::ThreadWorkers()
    : m_pool(new QThreadPool)
{
    // Work here waits for the disk and for other programs more than it computes.
    m_pool->setMaxThreadCount(8);
}

ThreadWorkers::~ThreadWorkers()
{
    if (end())
        delete m_pool;
}

bool ThreadWorkers::end()
{
    m_pool->clear();
    return m_pool->waitForDone(1000);
}

void ThreadWorkers::run(WorkerPriority priority, std::function<void()> work)
{
    m_pool->start(handedOver(std::move(work)), priority == WorkerPriority::UserInitiated ? 1 : 0);
}

void ThreadWorkers::runAt(const QByteArray &path, std::function<void()> work)
{
    if (lanes)
        lanes(path, std::move(work));
    else
        Workers::runAt(path, std::move(work));
}
