#include "platform/linux/files/InotifyFolders.h"

#include "base/Descriptor.h"

#include <QSet>
#include <QSocketNotifier>

#include <cerrno>
#include <ctime>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <csignal>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t interesting = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM
    | IN_MOVED_TO | IN_ONLYDIR | IN_EXCL_UNLINK;
constexpr double restAfterReading = 0.1; // Seconds.
constexpr std::time_t recentlyChanged = 1; // Seconds.
constexpr int overflowed = -1; // The watch of the event that says that events were lost.

enum class Lease { Granted, Refused, Unsupported };

/// Whether the kernel would lease the file for reading, which it does while nobody
/// writes. Who wants to write meanwhile makes it signal the holder, and nobody
/// handling that signal is the end of a program: it goes to this thread alone,
/// which keeps it from acting until it has been taken back.
Lease leaseOf(int file)
{
    sigset_t signal;
    sigset_t before;
    ::sigemptyset(&signal);
    ::sigaddset(&signal, SIGIO);
    ::pthread_sigmask(SIG_BLOCK, &signal, &before);
    const f_owner_ex thisThread { F_OWNER_TID, ::gettid() };
    const bool granted
        = ::fcntl(file, F_SETOWN_EX, &thisThread) == 0 && ::fcntl(file, F_SETLEASE, F_RDLCK) == 0;
    const Lease lease = granted ? Lease::Granted
        : errno == EAGAIN       ? Lease::Refused
                                : Lease::Unsupported;
    if (granted)
        ::fcntl(file, F_SETLEASE, F_UNLCK); // Not by closing it: a child may have it too.
    const timespec none {};
    while (::sigtimedwait(&signal, nullptr, &none) > 0) { }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return lease;
}

}

/// The inotify instance and who listens to which of its watches. One folder that
/// is opened under two names is one watch of the kernel's.
class InotifyFolders::Watches
{
public:
    explicit Watches(MainQueue &queue)
        : m_queue(queue)
    {
    }

    /// Any thread. The look at the path may take for ever, so others are not locked
    /// out meanwhile; if they removed a watch, it may have been this one.
    int add(const QByteArray &path)
    {
        std::unique_lock lock(m_mutex);
        if (!m_file)
            m_file = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        while (m_file) {
            const int removals = m_removals;
            lock.unlock();
            const int watch = ::inotify_add_watch(m_file.number(), path.constData(), interesting);
            lock.lock();
            if (watch < 0)
                break;
            if (removals == m_removals) {
                ++m_users[watch];
                return watch;
            }
        }
        return -1;
    }

    /// Any thread.
    void remove(int watch)
    {
        const std::lock_guard lock(m_mutex);
        if (--m_users[watch] > 0)
            return;
        m_users.erase(watch);
        ++m_removals;
        ::inotify_rm_watch(m_file.number(), watch);
    }

    Ticket listen(int watch, std::function<void()> handler)
    {
        if (!m_notifier) {
            m_notifier = std::make_unique<QSocketNotifier>(m_file.number(), QSocketNotifier::Read);
            QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                             [this] { read(); });
        }
        auto kept = std::make_shared<std::function<void()>>(std::move(handler));
        m_listeners.emplace(watch, kept);
        // What came before anybody listened has been read and passed over.
        if (m_missed.remove(watch))
            (*kept)();
        return kept;
    }

private:
    void read()
    {
        m_notifier->setEnabled(false);
        m_rest = m_queue.after(restAfterReading, [this] { m_notifier->setEnabled(true); });
        QSet<int> changed;
        alignas(inotify_event) char buffer[64 * 1024];
        for (ssize_t length = 0; (length = ::read(m_file.number(), buffer, sizeof buffer)) > 0;) {
            for (ssize_t at = 0; at < length;) {
                const auto &event = *reinterpret_cast<const inotify_event *>(buffer + at);
                if ((event.mask & IN_IGNORED) == 0) // The end of a watch.
                    changed.insert(event.wd);
                at += static_cast<ssize_t>(sizeof event + event.len);
            }
        }
        report(changed);
    }

    void report(const QSet<int> &changed)
    {
        const bool all = changed.contains(overflowed);
        std::vector<std::shared_ptr<std::function<void()>>> due;
        QSet<int> heard;
        for (auto it = m_listeners.begin(); it != m_listeners.end();) {
            const auto handler = it->second.lock();
            heard.insert(it->first);
            if (handler && (all || changed.contains(it->first)))
                due.push_back(handler);
            it = handler ? std::next(it) : m_listeners.erase(it);
        }
        m_missed += changed - heard;
        for (const auto &handler : due)
            (*handler)();
    }

    MainQueue &m_queue;
    std::mutex m_mutex; // Of the three below: folders are opened on workers.
    Descriptor m_file; // Its notifier goes before it.
    std::map<int, int> m_users; // By watch.
    int m_removals = 0;
    std::unique_ptr<QSocketNotifier> m_notifier;
    Ticket m_rest;
    std::multimap<int, std::weak_ptr<std::function<void()>>> m_listeners; // By watch.
    QSet<int> m_missed;
};

class InotifyFolders::Folder final : public WatchedFolder
{
public:
    Folder(std::shared_ptr<Watches> watches, int watch)
        : m_watches(std::move(watches))
        , m_watch(watch)
    {
    }
    ~Folder() override { m_watches->remove(m_watch); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    Ticket listen(std::function<void()> handler) override
    {
        return m_watches->listen(m_watch, std::move(handler));
    }

private:
    std::shared_ptr<Watches> m_watches;
    int m_watch;
};

InotifyFolders::InotifyFolders(MainQueue &queue)
    : m_watches(std::make_shared<Watches>(queue))
{
}

std::shared_ptr<WatchedFolder> InotifyFolders::open(const QByteArray &path)
{
    const int watch = m_watches->add(path);
    return watch < 0 ? nullptr : std::make_shared<Folder>(m_watches, watch);
}

FolderEvents::Writing InotifyFolders::writing(const QByteArray &path) const
{
    struct stat status = {};
    if (::lstat(path.constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return Writing::Over;
    const Descriptor file(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    const Lease lease = file ? leaseOf(file.number()) : Lease::Unsupported;
    if (lease != Lease::Unsupported)
        return lease == Lease::Granted ? Writing::Over : Writing::Open;
    return std::time(nullptr) - status.st_mtime <= recentlyChanged ? Writing::Recent
                                                                   : Writing::Over;
}
