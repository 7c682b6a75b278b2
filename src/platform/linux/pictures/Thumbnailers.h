#pragma once

#include "base/Ticket.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QHash>
#include <QString>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class MainQueue;
class QProcess;

/// The programs that applications install to make thumbnails of their files, by
/// entries "*.thumbnailer" in the data folders. They run one at a time, for a
/// limited time, without a shell, in the confinement of vantle-confined. Where the
/// kernel cannot keep them from the user's files none is run. Main thread, but for
/// commandFor().
class Thumbnailers
{
public:
    /// dataFolders: the user's first; each may have a folder "thumbnailers".
    /// confined: the path of vantle-confined.
    Thumbnailers(QByteArrayList dataFolders, QString confined, MainQueue &queue);

    /// The command of the first entry for that type whose program is installed,
    /// with its fields. Reads the entries at the first call: worker threads.
    std::optional<QByteArrayList> commandFor(const QByteArrayList &types);

    struct Job
    {
        QByteArrayList command;
        QByteArray input; // A path.
        QByteArray uri;
        int edge = 0; // Pixels.
    };
    /// `done` gets the path of what was written, which stays for as long as the
    /// ticket is held, or an empty one. Dropping the ticket takes a job that waits
    /// out, and ends one that runs.
    Ticket run(Job job, std::function<void(const QByteArray &output)> done);

private:
    struct Run;
    void next();
    void begin(const std::shared_ptr<Run> &run);
    void end(const std::shared_ptr<Run> &run, bool succeeded);

    const QByteArrayList m_dataFolders;
    const QString m_confined;
    MainQueue &m_queue;
    std::mutex m_mutex; // Of the entries.
    bool m_read = false;
    QHash<QByteArray, QByteArrayList> m_commands; // By type.
    std::deque<std::weak_ptr<Run>> m_waiting;
    std::weak_ptr<Run> m_running;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
