#include "platform/linux/InodeSearch.h"

#include "platform/linux/FolderTree.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <memory_resource>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <tuple>
#include <unordered_map>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

using Clock = std::chrono::steady_clock;

qint64 nanoseconds(qint64 seconds, qint64 rest)
{
    return seconds * 1'000'000'000 + rest;
}

/// What all threads of a walk share.
class Walk
{
public:
    Walk(const QList<FileIdentity> &wanted, InodeSearch::Limits limits,
         const std::atomic<bool> &cancelled)
        : m_limits(limits)
        , m_cancelled(cancelled)
    {
        for (const FileIdentity &identity : wanted)
            m_wanted.push_back({ identity });
        const auto key = [](const Wanted &w) {
            return std::tuple(w.identity.inode, w.identity.device, w.identity.birthSeconds,
                              w.identity.birthNanoseconds, w.identity.hasBirth);
        };
        std::sort(m_wanted.begin(), m_wanted.end(),
                  [&](const Wanted &a, const Wanted &b) { return key(a) < key(b); });
        const auto same = [&](const Wanted &a, const Wanted &b) { return key(a) == key(b); };
        m_wanted.erase(std::unique(m_wanted.begin(), m_wanted.end(), same), m_wanted.end());
        m_missing = m_wanted.size();
        timespec now {};
        clock_gettime(CLOCK_REALTIME_COARSE, &now); // By which the kernel dates changes.
        m_begin = nanoseconds(now.tv_sec, now.tv_nsec);
        m_stopped = m_wanted.empty();
    }

    /// Chooses the file system. False where the root is none of the folders that can be read.
    bool open(const QByteArray &root)
    {
        const std::unique_ptr<char, decltype(&std::free)> real(realpath(root.constData(), nullptr),
                                                               &std::free);
        if (!real)
            return false;
        m_root = real.get();
        if (m_root == "/")
            m_root.clear();
        // What is mounted below is not even opened: that could mount what is mounted on demand, or
        // wait for a server that is gone.
        m_mounts = mountPointsBelow(m_root);
        const OpenedFolder top = openFolder(real.get());
        struct stat status = {};
        if (top.descriptor.number() < 0 || fstat(top.descriptor.number(), &status) != 0)
            return false;
        m_device = status.st_dev;
        m_lasting = hasLastingNumbers(top.descriptor.number());
        return true;
    }

    [[nodiscard]] const std::string &root() const { return m_root; }
    [[nodiscard]] dev_t device() const { return m_device; }
    [[nodiscard]] qint64 begin() const { return m_begin; }
    [[nodiscard]] bool stopped() const { return m_stopped.load(std::memory_order_relaxed); }
    void trust() { m_trusted = m_lasting; }
    /// From now on, what was not found may still be there.
    void distrust() { m_trusted.store(false, std::memory_order_relaxed); }

    [[nodiscard]] bool isMountPoint(std::string_view path) const
    {
        return std::binary_search(m_mounts.begin(), m_mounts.end(), path, std::less<>());
    }

    [[nodiscard]] bool isAcrossMount(std::string_view path) const
    {
        return std::any_of(m_mounts.begin(), m_mounts.end(), [&](const std::string &mount) {
            return path.starts_with(mount)
                && (path.size() == mount.size() || path[mount.size()] == '/');
        });
    }

    /// Folders whose names stand in a changed one and that were read themselves.
    void know(std::string path, ino_t number) { m_known.emplace(std::move(path), number); }
    [[nodiscard]] bool knows(const std::string &path, ino_t number) const
    {
        if (m_known.empty())
            return false;
        const auto at = m_known.find(path);
        return at != m_known.end() && at->second == number;
    }

    [[nodiscard]] bool wants(ino_t number) const
    {
        const auto at = firstWanted(number);
        return at != m_wanted.end() && at->identity.inode == number;
    }

    void take(const FileIdentity &seen, const std::string &path)
    {
        const std::lock_guard lock(m_lock);
        for (auto at = firstWanted(seen.inode);
             at != m_wanted.end() && at->identity.inode == seen.inode; ++at) {
            if (!at->identity.hasBirth && at->identity.device == seen.device)
                distrust(); // May be the one or its successor.
            else if (at->identity == seen && !std::exchange(at->found, true)) {
                m_result.found.append({ seen, QByteArray::fromStdString(path) });
                if (--m_missing == 0)
                    stop();
            }
        }
    }

    /// Counts what was read; ends the walk at its limits.
    void count(qint64 entries)
    {
        const qint64 all = m_entries.fetch_add(entries, std::memory_order_relaxed) + entries;
        const std::chrono::duration<double> time = Clock::now() - m_start;
        if (all < m_limits.entries && time.count() < m_limits.seconds && !m_cancelled)
            return;
        const std::lock_guard lock(m_lock);
        stop();
    }

    /// Gives folders to all threads.
    void add(std::vector<Folder *> &folders)
    {
        if (folders.empty())
            return;
        const std::lock_guard lock(m_lock);
        m_pending.insert(m_pending.end(), folders.begin(), folders.end());
        folders.clear();
        if (m_idle > 0)
            m_more.notify_all();
    }

    /// The next folder to read; none when all threads have come to an end.
    Folder *next()
    {
        std::unique_lock lock(m_lock);
        ++m_idle;
        if (m_pending.empty() && m_idle == m_threads)
            m_more.notify_all();
        m_more.wait(lock,
                    [this] { return stopped() || !m_pending.empty() || m_idle == m_threads; });
        if (stopped() || m_pending.empty())
            return nullptr; // Stays idle, so that the others end as well.
        --m_idle;
        Folder *const folder = m_pending.back();
        m_pending.pop_back();
        return folder;
    }

    /// One step done by several threads, each with its own number.
    void share(const std::function<void(size_t)> &step)
    {
        const size_t most = static_cast<size_t>(std::max(m_limits.threads, 1));
        m_threads = most;
        m_idle = 0;
        std::vector<std::thread> others;
        try {
            while (others.size() + 1 < most)
                others.emplace_back(step, others.size() + 1);
        } catch (const std::system_error &) { // The system gives no more; fewer do as well.
            const std::lock_guard lock(m_lock);
            m_threads = others.size() + 1;
            m_more.notify_all();
        }
        step(0);
        for (std::thread &other : others)
            other.join();
    }

    InodeSearch::Result result()
    {
        m_result.whole = m_missing == 0 || (!stopped() && m_trusted);
        m_result.entries = m_entries;
        m_result.seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
        return std::move(m_result);
    }

private:
    struct Wanted
    {
        FileIdentity identity;
        bool found = false;
    };

    [[nodiscard]] std::vector<Wanted>::const_iterator firstWanted(ino_t number) const
    {
        return std::lower_bound(
            m_wanted.begin(), m_wanted.end(), number,
            [](const Wanted &wanted, ino_t n) { return wanted.identity.inode < n; });
    }
    std::vector<Wanted>::iterator firstWanted(ino_t number)
    {
        return m_wanted.begin() + (std::as_const(*this).firstWanted(number) - m_wanted.cbegin());
    }

    void stop()
    {
        m_stopped = true;
        m_more.notify_all();
    }

    const InodeSearch::Limits m_limits;
    const std::atomic<bool> &m_cancelled;
    const Clock::time_point m_start = Clock::now();
    qint64 m_begin = 0; // Nanoseconds, by the clock of the files.
    std::string m_root; // Empty for "/".
    dev_t m_device = 0;
    bool m_lasting = false; // A file's number is where it is, and remains the same.
    std::vector<std::string> m_mounts; // Sorted.
    std::unordered_map<std::string, ino_t> m_known; // During the second look.

    std::atomic<bool> m_stopped = false;
    std::atomic<bool> m_trusted = false;
    std::atomic<qint64> m_entries = 0;

    std::mutex m_lock; // Of all below.
    std::condition_variable m_more;
    std::vector<Folder *> m_pending; // The last one is read next, which keeps it short.
    size_t m_threads = 1;
    size_t m_idle = 0;
    std::vector<Wanted> m_wanted; // Sorted by number; only `found` changes.
    size_t m_missing = 0;
    InodeSearch::Result m_result;
};

/// One thread's part of a walk.
class Walker
{
public:
    explicit Walker(Walk &walk)
        : m_walk(walk)
        , m_buffer(std::make_unique<Buffer>())
    {
    }

    Folder *newFolder(const Folder *parent, std::string_view name, ino_t number)
    {
        auto *const text = static_cast<char *>(m_memory.allocate(name.size(), 1));
        name.copy(text, name.size());
        void *const place = m_memory.allocate(sizeof(Folder), alignof(Folder));
        return new (place) Folder { parent, { text, name.size() }, number };
    }

    /// Reads one folder and nothing below it.
    void lookInto(const QByteArray &path)
    {
        const std::string_view text(path.constData(), static_cast<size_t>(path.size()));
        if (text.empty() || m_walk.stopped() || m_walk.isAcrossMount(text))
            return;
        read(*newFolder(nullptr, text == "/" ? std::string_view() : text, 0));
        m_below.clear();
        m_read.clear();
    }

    void walk()
    {
        while (Folder *const folder = m_walk.next()) {
            read(*folder);
            m_walk.add(m_below);
        }
    }

    void findChanged()
    {
        for (Folder *const folder : m_read) {
            folder->changedSince = hasChanged(*folder);
            m_walk.count(0);
            if (m_walk.stopped())
                return;
        }
    }

    /// Gives what findChanged() found to all threads, to be read once more.
    void readChangedAgain()
    {
        for (Folder *const folder : m_read) {
            if (folder->parent != nullptr && folder->parent->changedSince) {
                writePath(*folder, m_path);
                m_walk.know(m_path, folder->number);
            }
            if (folder->changedSince)
                m_below.push_back(newFolder(folder->parent, folder->name, 0));
        }
        m_walk.add(m_below);
    }

private:
    static constexpr size_t bufferSize = 65536;
    struct alignas(dirent64) Buffer
    {
        char bytes[bufferSize];
    };

    /// The kernel's clock advances in steps: a folder that changed in the step in which the walk
    /// began, or later, may have changed after it was read without a difference in its time.
    bool hasChanged(const Folder &folder)
    {
        writePath(folder, m_path);
        struct statx status = {};
        if (statx(AT_FDCWD, m_path.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_CTIME,
                  &status)
            != 0)
            return errno != ENOENT && errno != ENOTDIR; // When it went, its parent changed.
        const qint64 changed = nanoseconds(status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec);
        return changed != folder.changed || changed >= m_walk.begin();
    }

    void read(Folder &folder)
    {
        m_walk.count(0);
        writePath(folder, m_path);
        if (m_walk.stopped() || m_walk.isMountPoint(m_path) || m_walk.knows(m_path, folder.number))
            return;
        const OpenedFolder opened = openFolder(m_path);
        const int descriptor = opened.descriptor.number();
        if (opened.refused)
            m_walk.distrust();
        struct stat status = {};
        if (descriptor < 0 || fstat(descriptor, &status) != 0 || status.st_dev != m_walk.device())
            return;
        folder.changed = nanoseconds(status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
        m_read.push_back(&folder);
        readEntries(folder, descriptor, status.st_ino);
    }

    void readEntries(const Folder &folder, int descriptor, ino_t number)
    {
        while (!m_walk.stopped()) {
            const ssize_t size = getdents64(descriptor, m_buffer->bytes, bufferSize);
            if (size < 0 && errno != ENOENT) // Removed while it was read.
                m_walk.distrust();
            if (size <= 0)
                return;
            qint64 entries = 0;
            for (size_t at = 0; at < static_cast<size_t>(size);) {
                const auto &entry = *reinterpret_cast<const dirent64 *>(m_buffer->bytes + at);
                const std::string_view name(entry.d_name);
                at += entry.d_reclen;
                if (name == "." && entry.d_ino != number)
                    m_walk.distrust(); // An overlay whose names carry the numbers of its layers.
                if (name == "." || name == "..")
                    continue;
                ++entries;
                if (m_walk.wants(entry.d_ino))
                    lookAtEntry(descriptor, entry.d_name);
                // A file of unknown type is tried as a folder.
                if (entry.d_type == DT_DIR || entry.d_type == DT_UNKNOWN)
                    m_below.push_back(newFolder(&folder, name, entry.d_ino));
            }
            m_walk.count(entries);
        }
    }

    void lookAtEntry(int folder, const char *name)
    {
        const FileLook look = lookAt(folder, name);
        if (look.state == FileLook::State::Unknown)
            m_walk.distrust();
        if (look.state == FileLook::State::Present)
            m_walk.take(look.identity, m_path == "/" ? m_path + name : m_path + '/' + name);
    }

    Walk &m_walk;
    std::pmr::monotonic_buffer_resource m_memory; // Of all its folders, let go at once.
    std::vector<Folder *> m_read;
    std::vector<Folder *> m_below; // Those in the folder that is being read.
    std::unique_ptr<Buffer> m_buffer;
    std::string m_path; // Of that folder.
};

}

InodeSearch::Result InodeSearch::run(const QByteArray &root, const QList<QByteArray> &first,
                                     const QList<FileIdentity> &wanted, Limits limits,
                                     const std::atomic<bool> &cancelled)
{
    Walk walk(wanted, limits, cancelled);
    if (walk.stopped() || !walk.open(root))
        return walk.result();
    std::deque<Walker> walkers;
    for (int thread = 0; thread < std::max(limits.threads, 1); ++thread)
        walkers.emplace_back(walk);
    for (const QByteArray &path : first)
        walkers.front().lookInto(path);
    walk.trust(); // The walk comes by those folders again; only then their failures count.
    std::vector<Folder *> top { walkers.front().newFolder(nullptr, walk.root(), 0) };
    walk.add(top);
    walk.share([&](size_t thread) { walkers[thread].walk(); });
    if (!walk.stopped())
        walk.share([&](size_t thread) { walkers[thread].findChanged(); });
    if (!walk.stopped()) {
        for (Walker &walker : walkers)
            walker.readChangedAgain();
        walk.share([&](size_t thread) { walkers[thread].walk(); });
    }
    return walk.result();
}
