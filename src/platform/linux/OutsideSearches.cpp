#include "platform/linux/OutsideSearches.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

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
    struct Course
    {
        bool running = false;
        Clock::time_point restsUntil;
    };
    struct Kept
    {
        Answer answer;
        Clock::time_point until;
    };

    Shared(InodeSearch::Limits l, double rest)
        : limits(l)
        , restTime(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(rest)))
    {
    }

    const InodeSearch::Limits limits;
    const Clock::duration restTime;
    std::atomic<bool> cancelled = false;
    std::mutex mutex;
    QHash<quint64, Course> courses; // By device.
    QHash<FileIdentity, Kept> kept;
    QSet<FileIdentity> askedFor;
};

OutsideSearches::OutsideSearches(InodeSearch::Limits limits, double restSeconds)
    : m_shared(std::make_shared<Shared>(limits, restSeconds))
{
}

OutsideSearches::~OutsideSearches()
{
    m_shared->cancelled = true;
}

OutsideSearches::Answer OutsideSearches::answerFor(const FileIdentity &file) const
{
    const std::lock_guard lock(m_shared->mutex);
    const auto kept = m_shared->kept.constFind(file);
    return kept == m_shared->kept.cend() || kept->until < Clock::now() ? Answer() : kept->answer;
}

void OutsideSearches::forget(const FileIdentity &file)
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->kept.remove(file);
}

bool OutsideSearches::isIdle(dev_t device) const
{
    const std::lock_guard lock(m_shared->mutex);
    const Shared::Course course = m_shared->courses.value(device);
    return !course.running && course.restsUntil <= Clock::now();
}

bool OutsideSearches::isNew(const FileIdentity &file)
{
    const std::lock_guard lock(m_shared->mutex);
    const qsizetype before = m_shared->askedFor.size();
    m_shared->askedFor.insert(file);
    return m_shared->askedFor.size() > before;
}

const std::atomic<bool> &OutsideSearches::cancelled() const
{
    return m_shared->cancelled;
}

void OutsideSearches::start(const Volume &volume, const QList<QByteArray> &first,
                            const QList<FileIdentity> &wanted)
{
    const std::lock_guard lock(m_shared->mutex);
    const Clock::time_point now = Clock::now();
    Shared::Course &course = m_shared->courses[volume.device];
    if (course.running || course.restsUntil > now)
        return;
    m_shared->kept.removeIf([&](const auto &kept) { return kept.value().until < now; });
    m_shared->askedFor.clear();
    try {
        std::thread(search, m_shared, volume, first, wanted).detach();
        course.running = true;
    } catch (const std::system_error &) {
        course.restsUntil = now + m_shared->restTime; // No thread to be had.
    }
}

void OutsideSearches::search(const std::shared_ptr<Shared> &shared, const Volume &volume,
                             const QList<QByteArray> &first, QList<FileIdentity> wanted)
{
    takeLowestPriority();
    bool whole = true;
    QHash<FileIdentity, Answer> answers;
    for (const QByteArray &root : volume.roots) {
        const auto result
            = InodeSearch::run(root, first, wanted, shared->limits, shared->cancelled);
        for (const auto &[file, path] : result.found)
            answers.insert(file, { Answer::State::Found, path });
        wanted.removeIf([&](const FileIdentity &file) { return answers.contains(file); });
        whole = whole && (result.whole || wanted.isEmpty());
    }
    for (const FileIdentity &file : std::as_const(wanted)) {
        if (whole)
            answers.insert(file, { Answer::State::Absent, {} });
    }
    const std::lock_guard lock(shared->mutex);
    const Clock::time_point now = Clock::now();
    for (auto answer = answers.cbegin(); answer != answers.cend(); ++answer)
        shared->kept.insert(answer.key(), { answer.value(), now + std::chrono::minutes(10) });
    Shared::Course &course = shared->courses[volume.device];
    course.running = false;
    if (!whole)
        course.restsUntil = now + shared->restTime;
}
