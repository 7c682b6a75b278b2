#pragma once

#include "platform/linux/files/FileIdentity.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// Looks at files where the answer may never come: one thread a mount. While it
/// has not come back its mount gets no other one, and nobody waits for it: it
/// keeps alive by itself what it needs. Any thread.
class RemoteLooks
{
public:
    using Look = std::function<FileLook(const QByteArray &path)>;
    using Clock = std::chrono::steady_clock;

    explicit RemoteLooks(Look look);

    struct Task
    {
        int query;
        QByteArray path;
        QByteArray otherPath; // May be empty.
        std::optional<FileIdentity> wanted; // Looked for in the folders `near` where both are free.
        QList<QByteArray> near;
    };
    struct Result
    {
        int query;
        FileLook look;
        QByteArray otherPath; // The task's, or where it was found.
        FileLook otherLook; // Missing where there was no other path.
        bool covered = false; // The folders were read to their ends.
        quint64 fileSystem = 0;
    };
    struct Job;

    /// Null while the mount's thread has not come back. A job that was cut short
    /// is followed by one that begins where it ended.
    std::shared_ptr<Job> start(const QByteArray &mountPoint, const QList<Task> &tasks);
    /// Waits until all are done, at most until then, and lets the rest be.
    static QList<Result> collect(Job &job, Clock::time_point deadline);

private:
    static void lookNear(const Task &task, Result &result);
    static void work(const std::shared_ptr<Job> &job, const Look &look, qsizetype start);

    const Look m_look;
    std::mutex m_mutex;
    QHash<QByteArray, std::shared_ptr<Job>> m_jobs; // The last of each mount.
};
