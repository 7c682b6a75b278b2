#include "panel/FolderWatcher.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"

#include <algorithm>
#include <array>
#include <utility>

#include <sys/stat.h>

namespace {

constexpr double scanDelay = 0.8; // Seconds: time for a writer to finish.

// What downloaders and editors name a file that they are still writing.
constexpr std::array skipExtensions { "download", "crdownload", "part", "partial", "tmp" };

bool isPartial(const QByteArray &name)
{
    const auto point = name.lastIndexOf('.');
    return point > 0
        && std::find(skipExtensions.begin(), skipExtensions.end(), name.mid(point + 1).toLower())
        != skipExtensions.end();
}

/// A browser reserves the final name with an empty file while it writes into
/// another one beside it, whose name begins alike.
bool isPlaceholder(const QByteArray &path, const QList<QByteArray> &names)
{
    struct stat status = {};
    if (::lstat(path.constData(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > 0)
        return false;
    const QByteArray name = FilePath::lastComponent(path);
    const auto point = name.lastIndexOf('.');
    const QByteArray stem = point > 0 ? name.left(point) : name;
    return std::any_of(names.begin(), names.end(), [&](const QByteArray &other) {
        return isPartial(other) && other.startsWith(stem);
    });
}

}

FolderWatcher::FolderWatcher(FolderEvents &events, MainQueue &queue, Workers &workers)
    : m_events(events)
    , m_queue(queue)
    , m_workers(workers)
    , m_self(std::make_shared<FolderWatcher *>(this))
{
}

FolderWatcher::~FolderWatcher() = default;

void FolderWatcher::watch(const QList<QByteArray> &paths)
{
    std::erase_if(m_folders, [&](const auto &entry) { return !paths.contains(entry.first); });
    for (const QByteArray &path : paths) {
        if (m_folders.count(path) == 0)
            open(path);
    }
}

/// Opens before it lists, so that nothing that comes in between is missed.
void FolderWatcher::open(const QByteArray &path)
{
    const auto folder = std::make_shared<Folder>();
    m_folders[path] = folder;
    m_workers.runAt(path,
                    [&events = m_events, &queue = m_queue, path, weak = std::weak_ptr(folder),
                     self = std::weak_ptr(m_self)] {
                        auto source = events.open(path);
                        auto known = source ? visible(NativeFile::namesIn(path)) : Names();
                        queue.post([self, path, weak, source = std::move(source),
                                    known = std::move(known)]() mutable {
                            if (const auto watcher = self.lock())
                                (*watcher)->opened(path, weak, std::move(source), std::move(known));
                        });
                    });
}

void FolderWatcher::opened(const QByteArray &path, const std::weak_ptr<Folder> &folder,
                           std::shared_ptr<WatchedFolder> source, Names known)
{
    const auto entry = folder.lock();
    if (!entry)
        return; // No longer wanted.
    if (!source) {
        m_folders.erase(path);
        return;
    }
    entry->source = std::move(source);
    entry->known = std::move(known);
    entry->listening = entry->source->listen([this, path] { scheduleScan(path); });
}

void FolderWatcher::scheduleScan(const QByteArray &path)
{
    const auto found = m_folders.find(path);
    if (found == m_folders.end())
        return;
    auto &due = found->second->due;
    due.push_back(m_queue.after(scanDelay, [this, path] { scan(path); }));
}

void FolderWatcher::scan(const QByteArray &path)
{
    const auto folder = m_folders.at(path); // Else its tickets would be gone.
    folder->due.pop_front(); // All wait equally long, so the oldest is the one that runs.
    if (folder->scanning) {
        folder->again = true;
        return;
    }
    folder->scanning = true;
    m_workers.runAt(path,
                    [&events = m_events, &queue = m_queue, path, known = folder->known,
                     weak = std::weak_ptr(folder), self = std::weak_ptr(m_self)] {
                        auto listing = list(events, path, known);
                        queue.post([self, path, weak, listing = std::move(listing)]() mutable {
                            if (const auto watcher = self.lock())
                                (*watcher)->scanned(path, weak, std::move(listing));
                        });
                    });
}

void FolderWatcher::scanned(const QByteArray &path, const std::weak_ptr<Folder> &folder,
                            Listing listing)
{
    const auto entry = folder.lock();
    if (!entry)
        return;
    entry->scanning = false;
    entry->known = std::move(listing.names);
    if (std::exchange(entry->again, false) || listing.unsure)
        scheduleScan(path);
    if (!listing.fresh.isEmpty() && onNewFiles)
        onNewFiles(listing.fresh);
}

FolderWatcher::Names FolderWatcher::visible(const QList<QByteArray> &all)
{
    Names names;
    names.reserve(all.size());
    for (const QByteArray &name : all) {
        if (!name.startsWith('.') && !isPartial(name))
            names.insert(name);
    }
    return names;
}

FolderWatcher::Listing FolderWatcher::list(const FolderEvents &events, const QByteArray &path,
                                           const Names &known)
{
    Listing listing;
    const auto all = NativeFile::namesIn(path);
    listing.names = visible(all);
    QList<QByteArray> fresh;
    for (const QByteArray &name : std::as_const(listing.names)) {
        if (!known.contains(name))
            fresh.append(name);
    }
    std::sort(fresh.begin(), fresh.end());
    for (const QByteArray &name : std::as_const(fresh)) {
        const QByteArray file = path + '/' + name;
        const auto writing
            = isPlaceholder(file, all) ? FolderEvents::Writing::Open : events.writing(file);
        if (writing == FolderEvents::Writing::Over) {
            listing.fresh.append(FilePath::toUrl(file));
            continue;
        }
        listing.names.remove(name);
        listing.unsure = listing.unsure || writing == FolderEvents::Writing::Recent;
    }
    return listing;
}
