#pragma once

#include "base/Ticket.h"

#include <QByteArray>

#include <functional>
#include <memory>

/// A folder whose entries come and go under the kernel's eye.
class WatchedFolder
{
public:
    virtual ~WatchedFolder() = default;
    /// Calls the handler on the main thread after entries came, went or were
    /// written to their end, once for many that happen together; also for what
    /// happened since the folder was opened. Main thread.
    [[nodiscard]] virtual Ticket listen(std::function<void()> handler) = 0;
};

/// Tells when something happens directly in a folder.
class FolderEvents
{
public:
    virtual ~FolderEvents() = default;

    /// Null if the folder cannot be opened. May wait for the disk: for workers.
    virtual std::shared_ptr<WatchedFolder> open(const QByteArray &path) = 0;

    enum class Writing {
        Over, // Nobody has it open for writing; folders, links and what is gone count as that.
        Open, // When it is closed, the folder's handler is called.
        Recent, // The file system cannot tell, and the file changed within the last second.
    };
    /// Whether the file is still being written. For workers.
    virtual Writing writing(const QByteArray &path) const = 0;
};
