#include "platform/linux/FileLanes.h"

#include <QThreadPool>

#include <utility>

namespace {

constexpr int localThreads = 2;
constexpr int remoteThreads = 2;

QThreadPool *makePool(int threads)
{
    auto *pool = new QThreadPool;
    pool->setMaxThreadCount(threads);
    return pool;
}

void endPool(QThreadPool *pool)
{
    pool->clear();
    if (pool->waitForDone(200)) // Milliseconds.
        delete pool;
}

}

FileLanes::FileLanes()
    : m_mounts("/proc/self/mountinfo")
    , m_local(makePool(localThreads))
    , m_remote(makePool(remoteThreads))
{
}

FileLanes::~FileLanes()
{
    endPool(m_local);
    endPool(m_remote);
}

bool FileLanes::isRemote(const QByteArray &path)
{
    return m_mounts.current()->isRemote(path);
}

void FileLanes::run(const QByteArray &path, std::function<void()> work)
{
    (isRemote(path) ? m_remote : m_local)->start(std::move(work));
}
