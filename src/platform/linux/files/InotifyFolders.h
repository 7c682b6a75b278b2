#pragma once

#include "base/MainQueue.h"
#include "platform/FolderEvents.h"

#include <memory>

/// Folder events by inotify, on one descriptor that is opened with the first
/// folder. What is read together is reported together, and reading rests for a
/// tenth of a second after it, so that a burst costs ten wake-ups a second.
class InotifyFolders final : public FolderEvents
{
public:
    explicit InotifyFolders(MainQueue &queue);

    std::shared_ptr<WatchedFolder> open(const QByteArray &path) override;
    /// Asks for a lease, which the kernel refuses while anybody writes. It grants
    /// leases to the owner of a file only, and not on network file systems.
    Writing writing(const QByteArray &path) const override;

private:
    class Watches;
    class Folder;

    std::shared_ptr<Watches> m_watches;
};
