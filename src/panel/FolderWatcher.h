#pragma once

#include "base/MainQueue.h"
#include "base/Workers.h"
#include "platform/FolderEvents.h"

#include <QByteArray>
#include <QList>
#include <QSet>
#include <QUrl>

#include <functional>
#include <list>
#include <map>
#include <memory>

/// Notices new files directly in the watched folders. New is a name that was not
/// there at the last listing: a renamed file is new, a file that went is not
/// missed. What is being written is left out of a listing, and so is new when it
/// is whole. Listings are made on workers. Main thread.
class FolderWatcher
{
public:
    FolderWatcher(FolderEvents &events, MainQueue &queue, Workers &workers);
    ~FolderWatcher();
    FolderWatcher(const FolderWatcher &) = delete;
    FolderWatcher &operator=(const FolderWatcher &) = delete;

    /// The new files of one scan, in the order of their names.
    std::function<void(const QList<QUrl> &)> onNewFiles;

    /// Makes these the watched folders. One that was watched before goes on as it
    /// was; what lies in a new one already is not reported. A folder that cannot
    /// be opened is passed over until it is named again.
    void watch(const QList<QByteArray> &paths);

private:
    using Names = QSet<QByteArray>;
    struct Folder
    {
        std::shared_ptr<WatchedFolder> source; // Null until the worker has opened it.
        Ticket listening;
        Names known;
        std::list<Ticket> due; // Scans whose delay runs.
        bool scanning = false;
        bool again = false; // A scan fell due while another one was running.
    };
    struct Listing
    {
        Names names;
        QList<QUrl> fresh; // Sorted by name.
        bool unsure = false; // A file was left out of which no event will tell.
    };

    static Names visible(const QList<QByteArray> &all);
    static Listing list(const FolderEvents &events, const QByteArray &path, const Names &known);

    void open(const QByteArray &path);
    void opened(const QByteArray &path, const std::weak_ptr<Folder> &folder,
                std::shared_ptr<WatchedFolder> source, Names known);
    void scheduleScan(const QByteArray &path);
    void scan(const QByteArray &path);
    void scanned(const QByteArray &path, const std::weak_ptr<Folder> &folder, Listing listing);

    FolderEvents &m_events;
    MainQueue &m_queue;
    Workers &m_workers;
    std::map<QByteArray, std::shared_ptr<Folder>> m_folders; // By path.
    std::shared_ptr<FolderWatcher *> m_self; // Work that comes back late asks it first.
};
