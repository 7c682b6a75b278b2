#include "platform/linux/OutsideSearches.h"

#include <QHash>
#include <QSet>

#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr qsizetype mostKept = 100'000;

/// For the calling thread and those that it starts.
void takeLowestPriority()
{
    // ioprio_set(2). Its constants have no header that every kernel keeps fit for C++.
    constexpr int thisThread = 1;
    constexpr int idle = 3 << 13;
    ::syscall(SYS_ioprio_set, thisThread, 0, idle);
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), 19);
}

}

struct OutsideSearches::Shared
{
    struct Kept
    {
        Answer answer;
        Clock::time_point until;
        quint64 mounts = 0; // The table's number at the search.
    };

    const InodeSearch::Limits limits;
    const std::chrono::duration<double> apart;
    std::atomic<bool> cancelled = false;
    std::mutex mutex;
    QSet<quint64> running; // By device.
    QHash<FileIdentity, Kept> kept;
};

OutsideSearches::OutsideSearches(InodeSearch::Limits limits, double secondsApart)
    : m_shared(new Shared { limits, std::chrono::duration<double>(secondsApart), {}, {}, {}, {} })
{
}

OutsideSearches::~OutsideSearches()
{
    cancel();
}

void OutsideSearches::cancel()
{
    m_shared->cancelled = true;
}

OutsideSearches::Answer OutsideSearches::answerFor(const FileIdentity &file,
                                                   const Mounts &mounts) const
{
    const std::lock_guard lock(m_shared->mutex);
    const auto kept = m_shared->kept.constFind(file);
    const bool holds = kept != m_shared->kept.cend() && kept->mounts == mounts.number()
        && (kept->answer.state == Answer::State::Undecided || kept->until >= Clock::now());
    return holds ? kept->answer : Answer();
}

void OutsideSearches::forget(const FileIdentity &file)
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->kept.remove(file);
}

const std::atomic<bool> &OutsideSearches::cancelled() const
{
    return m_shared->cancelled;
}

void OutsideSearches::start(const Volume &volume, const std::shared_ptr<const Mounts> &mounts,
                            const QList<FileIdentity> &wanted)
{
    const std::lock_guard lock(m_shared->mutex);
    if (m_shared->running.contains(volume.device))
        return;
    if (m_shared->kept.size() > mostKept)
        m_shared->kept.clear();
    try {
        std::thread(search, m_shared, volume, mounts, wanted).detach();
        m_shared->running.insert(volume.device);
    } catch (const std::system_error &) { // No thread to be had; the next check tries again.
    }
}

void OutsideSearches::search(const std::shared_ptr<Shared> &shared, const Volume &volume,
                             const std::shared_ptr<const Mounts> &mounts,
                             QList<FileIdentity> wanted)
{
    using State = Answer::State;
    takeLowestPriority();
    QHash<FileIdentity, QByteArray> found;
    bool whole = true;
    for (int look = 0; look < 2 && whole && !wanted.isEmpty(); ++look) {
        if (look > 0)
            std::this_thread::sleep_for(shared->apart);
        InodeSearch walk(wanted, shared->limits, shared->cancelled);
        for (const QByteArray &root : volume.roots)
            walk.walk(root, *mounts, volume.subvolumes);
        found.insert(walk.found());
        wanted.removeIf([&](const FileIdentity &file) { return found.contains(file); });
        whole = walk.isWhole();
    }
    const std::lock_guard lock(shared->mutex);
    const Clock::time_point until = Clock::now() + std::chrono::minutes(10);
    for (auto file = found.cbegin(); file != found.cend(); ++file)
        shared->kept.insert(file.key(),
                            { { State::Found, file.value() }, until, mounts->number() });
    for (const FileIdentity &file : std::as_const(wanted))
        shared->kept.insert(
            file, { { whole ? State::Absent : State::Undecided, {} }, until, mounts->number() });
    shared->running.remove(volume.device);
}
