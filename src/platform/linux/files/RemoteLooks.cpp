#include "platform/linux/files/RemoteLooks.h"

#include "base/DetachedThread.h"
#include "platform/linux/files/InodeSearch.h"
#include "platform/linux/files/Volumes.h"

#include <condition_variable>

struct RemoteLooks::Job
{
    const QList<Task> tasks;
    std::mutex mutex;
    std::condition_variable changed;
    QList<Result> results;
    qsizetype next = 0; // The task to go on with.
    bool stopped = false; // Nobody waits for the rest.
    bool ended = false;
};

RemoteLooks::RemoteLooks(Look look)
    : m_look(std::move(look))
{
}

std::shared_ptr<RemoteLooks::Job> RemoteLooks::start(const QByteArray &mountPoint,
                                                     const QList<Task> &tasks)
{
    const std::lock_guard lock(m_mutex);
    std::shared_ptr<Job> &last = m_jobs[mountPoint];
    qsizetype start = 0;
    if (last) {
        const std::lock_guard lastLock(last->mutex);
        if (!last->ended)
            return nullptr;
        start = last->next % tasks.size();
    }
    const std::shared_ptr<Job> job(new Job { tasks, {}, {}, {}, 0, false, false });
    if (!startDetached([job, look = m_look, start] { work(job, look, start); }))
        return nullptr;
    return last = job;
}

QList<RemoteLooks::Result> RemoteLooks::collect(Job &job, Clock::time_point deadline)
{
    std::unique_lock lock(job.mutex);
    job.changed.wait_until(lock, deadline, [&] { return job.ended; });
    job.stopped = true;
    return job.results;
}

void RemoteLooks::lookNear(const Task &task, Result &result)
{
    constexpr InodeSearch::Limits limits { 3, 100'000 };
    const std::atomic<bool> cancelled = false;
    InodeSearch search({ *task.wanted }, limits, cancelled);
    for (const QByteArray &folder : task.near)
        search.lookInto(folder);
    result.covered = !search.isOver() && search.isWhole();
    for (const QByteArray &path : search.found()) {
        result.otherPath = path;
        result.otherLook = lookAt(path);
    }
}

void RemoteLooks::work(const std::shared_ptr<Job> &job, const Look &look, qsizetype start)
{
    QHash<quint64, quint64> fileSystems; // By device.
    const qsizetype count = job->tasks.size();
    for (qsizetype i = 0; i < count; ++i) {
        const qsizetype index = (start + i) % count;
        const Task &task = job->tasks[index];
        Result result { task.query, look(task.path), task.otherPath, {}, false, 0 };
        result.otherLook.state = FileLook::State::Missing;
        if (!task.otherPath.isEmpty())
            result.otherLook = look(task.otherPath);
        const bool present = result.look.state == FileLook::State::Present;
        if (!present && result.otherLook.state == FileLook::State::Missing && task.wanted)
            lookNear(task, result);
        const FileLook &file = present ? result.look : result.otherLook;
        const auto device = file.identity.device;
        if (file.state == FileLook::State::Present && !fileSystems.contains(device))
            fileSystems.insert(device,
                               Volumes::fileSystemOf(present ? task.path : result.otherPath));
        result.fileSystem = fileSystems.value(device);
        const std::lock_guard lock(job->mutex);
        job->results.append(result);
        job->next = i + 1 == count ? 0 : index + 1;
        if (job->stopped)
            break;
    }
    const std::lock_guard lock(job->mutex);
    job->ended = true;
    job->changed.notify_all();
}
