#include "platform/linux/files/FileLanes.h"

#include "base/HandedOver.h"
#include "platform/linux/files/LocalFolder.h"
#include "platform/linux/files/MountTable.h"

#include <QDeadlineTimer>
#include <QThreadPool>

#include <map>
#include <mutex>

namespace {

constexpr int threadsOfMount = 2;
constexpr int patience = 200; // Milliseconds at the end.

}

class FileLanes::Lanes
{
public:
    explicit Lanes(const QByteArray &mountTable)
        : mounts(mountTable)
    {
    }

    void start(const QByteArray &mount, std::function<void()> work)
    {
        const std::lock_guard lock(m_mutex);
        if (m_ended)
            return;
        QThreadPool *&pool = m_pools[mount];
        if (!pool) {
            pool = new QThreadPool;
            pool->setMaxThreadCount(threadsOfMount);
        }
        pool->start(handedOver(std::move(work)));
    }

    bool end()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
        }
        QDeadlineTimer deadline(patience);
        std::erase_if(m_pools, [&deadline](const auto &entry) {
            QThreadPool *const pool = entry.second;
            pool->clear();
            if (!pool->waitForDone(static_cast<int>(deadline.remainingTime())))
                return false;
            delete pool;
            return true;
        });
        return m_pools.empty();
    }

    MountTable mounts;

private:
    std::mutex m_mutex;
    std::map<QByteArray, QThreadPool *> m_pools; // By mount point.
    bool m_ended = false;
};

FileLanes::FileLanes(const QByteArray &mountTable)
    : m_lanes(std::make_shared<Lanes>(mountTable))
{
}

FileLanes::~FileLanes()
{
    m_lanes->end();
}

bool FileLanes::end()
{
    return m_lanes->end();
}

bool FileLanes::isRemote(const QByteArray &path)
{
    return m_lanes->mounts.current()->isRemote(path);
}

void FileLanes::run(const QByteArray &path, std::function<void()> work)
{
    const auto mounts = m_lanes->mounts.current();
    const auto laneOf = [](const Mount *mount) { return mount ? mount->point : QByteArray(); };
    const Mount *mount = mounts->of(path);
    if (mount && mount->remote)
        return m_lanes->start(mount->point, std::move(work));
    // A link may lead elsewhere, and only a thread may look.
    m_lanes->start(laneOf(mount),
                   [lanes = m_lanes, mounts, real = path, laneOf, here = laneOf(mount),
                    work = std::move(work)]() mutable {
                       LocalFolder::followLinks(real, *mounts);
                       const QByteArray lane = laneOf(mounts->of(real));
                       if (lane == here)
                           work();
                       else
                           lanes->start(lane, std::move(work));
                   });
}
