#include "platform/linux/files/OutsideSearches.h"

#include "base/DetachedThread.h"
#include "platform/linux/files/LocalFolder.h"

#include <algorithm>
#include <thread>
#include <utility>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr qsizetype mostKept = 100'000;

/// For the calling thread. Not the lowest one, at which the walk of a disk does not end while two
/// other programs compute.
void takeLowPriority()
{
    // ioprio_set(2). Its constants have no header that every kernel keeps fit for C++.
    constexpr int thisThread = 1;
    constexpr int lastOfTheOthers = 2 << 13 | 7;
    constexpr int niceness = 5;
    ::syscall(SYS_ioprio_set, thisThread, 0, lastOfTheOthers);
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), niceness);
}

}

bool OutsideSearches::Walked::holdsFor(const Volume &volume, const Mounts &now)
{
    const auto hasComeToLight = [&](const QByteArray &path) {
        return !now.isPoint(path) && !LocalFolder(path, now).isBare();
    };
    if (std::exchange(mounts, now.number()) != now.number())
        holds = holds && std::ranges::none_of(covered, hasComeToLight);
    return holds && std::ranges::all_of(volume.roots, [&](const QByteArray &root) {
               return roots.contains(root);
           });
}

OutsideSearches::Answer OutsideSearches::answerFor(const FileIdentity &file, const Volume &volume,
                                                   const Mounts &mounts)
{
    using State = Answer::State;
    const std::lock_guard lock(m_mutex);
    const auto kept = m_kept.constFind(file);
    if (kept == m_kept.cend())
        return {};
    const bool holds = kept->answer.state == State::Found
        || ((kept->answer.state == State::Undecided || kept->until >= Clock::now())
            && kept->walked->holdsFor(volume, mounts));
    return holds ? kept->answer : Answer();
}

bool OutsideSearches::hasAnswers()
{
    const std::lock_guard lock(m_mutex);
    return !m_kept.isEmpty();
}

void OutsideSearches::forget(const FileIdentity &file)
{
    const std::lock_guard lock(m_mutex);
    m_kept.remove(file);
}

void OutsideSearches::start(const Volume &volume, const std::shared_ptr<const Mounts> &mounts,
                            const QList<FileIdentity> &wanted, const QList<QByteArray> &first)
{
    const std::lock_guard lock(m_mutex);
    if (m_running.contains(volume.device))
        return;
    if (m_kept.size() > mostKept)
        m_kept.clear();
    const auto work = [self = shared_from_this(), volume, mounts, wanted, first] {
        self->search(volume, *mounts, wanted, first);
    };
    if (startDetached(work)) // Else the next check tries again.
        m_running.insert(volume.device);
}

void OutsideSearches::search(const Volume &volume, const Mounts &mounts, QList<FileIdentity> wanted,
                             const QList<QByteArray> &first)
{
    takeLowPriority();
    const auto walked = std::make_shared<Walked>();
    walked->roots = volume.roots;
    const auto keep = [&](const FileIdentity &file, const Answer &answer) {
        m_kept.insert(file, { answer, Clock::now() + std::chrono::minutes(10), walked });
    };
    bool whole = true;
    for (int look = 0; look < 2 && whole && !wanted.isEmpty(); ++look) {
        if (look > 0)
            std::this_thread::sleep_for(m_apart);
        InodeSearch walk(wanted, m_limits, m_cancelled);
        for (const QByteArray &root : volume.roots)
            walk.walk(root, mounts, volume.subvolumes, first);
        wanted.removeIf([&](const FileIdentity &file) { return walk.found().contains(file); });
        whole = walk.isWhole();
        walked->covered += walk.covered();
        const std::lock_guard lock(m_mutex);
        for (auto file = walk.found().cbegin(); file != walk.found().cend(); ++file)
            keep(file.key(), { Answer::State::Found, file.value() });
    }
    const std::lock_guard lock(m_mutex);
    for (const FileIdentity &file : std::as_const(wanted))
        keep(file, { whole ? Answer::State::Absent : Answer::State::Undecided, {} });
    m_running.remove(volume.device);
}
