#include "platform/linux/files/FileLanes.h"

#include "base/HandedOver.h"

#include "base/FilePath.h"
#include "platform/linux/files/LocalFolder.h"
#include "platform/linux/files/MountTable.h"

#include <QDeadlineTimer>
#include <QThreadPool>

#include <array>
#include <climits>
#include <map>
#include <mutex>
#include <utility>

#include <unistd.h>

namespace {

constexpr int threadsOfMount = 2;
constexpr int mostLinks = 8; // From file to file; the folders' are followed besides.
constexpr int patience = 200; // Milliseconds at the end.

/// Where the file is, links followed as far as no remote mount is touched.
QByteArray realPath(QByteArray path, const Mounts &mounts)
{
    std::array<char, PATH_MAX> target {};
    for (int links = 0; links < mostLinks && !mounts.isRemote(path); ++links) {
        const QByteArray name = FilePath::lastComponent(path);
        const LocalFolder folder(FilePath::parent(path), mounts);
        const QByteArray inside = FilePath::standardized(folder.realPath() + '/' + name);
        if (folder.state() == LocalFolder::State::Remote)
            return inside;
        const ssize_t size = folder.state() != LocalFolder::State::Open || mounts.isRemote(inside)
            ? -1
            : ::readlinkat(folder.descriptor(), name.constData(), target.data(), target.size());
        if (size <= 0)
            return inside;
        const QByteArray next(target.data(), size);
        path = FilePath::standardized(next.startsWith('/') ? next : folder.realPath() + '/' + next);
    }
    return path;
}

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
    m_lanes->start(
        laneOf(mount),
        [lanes = m_lanes, mounts, path, laneOf, here = laneOf(mount), work = std::move(work)] {
            const QByteArray real = laneOf(mounts->of(realPath(path, *mounts)));
            if (real == here)
                work();
            else
                lanes->start(real, work);
        });
}
