#include "platform/linux/pictures/DecoderPool.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "base/NativeFile.h"
#include "platform/linux/pictures/Decoded.h"
#include "platform/linux/pictures/HelperProcess.h"

#include <algorithm>
#include <array>
#include <thread>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

using DecoderProtocol::Job;
using DecoderProtocol::Result;

namespace {

constexpr double timeForAJob = 10; // Seconds.
constexpr double timeOfRest = 300; // Seconds until idle processes end.
constexpr std::array mostOpen { 4, 2 }; // Local and remote files open, or being opened, at once.
constexpr qsizetype mostFailures = 4096; // That are remembered.

size_t processes()
{
    return std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
}

struct Opened
{
    std::shared_ptr<Descriptor> file;
    QByteArray version {};
};

Opened openFile(const QByteArray &path)
{
    Descriptor file = NativeFile::open(path);
    struct stat status = {};
    const bool known = file && ::fstat(file.number(), &status) == 0;
    return { std::make_shared<Descriptor>(std::move(file)),
             known ? DecoderPool::versionOf(status) : QByteArray() };
}

/// In place of a file.
Opened memoryWith(const QByteArray &data)
{
    Descriptor memory = HelperProcess::makeMemory(data.size());
    const auto size = static_cast<size_t>(data.size());
    if (::pwrite(memory.number(), data.constData(), size, 0) != data.size())
        memory = Descriptor();
    return { std::make_shared<Descriptor>(std::move(memory)) };
}

template<typename T>
auto telling(std::optional<T> (Decoded::*what)() const, PictureDecoder::Answer<T> answer)
{
    return
        [what, answer = std::move(answer)](const Decoded &decoded) { answer((decoded.*what)()); };
}

}

struct DecoderPool::Work
{
    enum class Step { Waiting, Opening, Open };

    Job job;
    QByteArray path {};
    QByteArray data {}; // In place of a file, until it is opened.
    Urgency urgency = Urgency::Preview;
    std::function<void(const Decoded &)> answer {};

    bool remote = false;
    Step step = Step::Waiting;
    Descriptor file {};
    QByteArray version {};
    Descriptor memory {}; // For the result, once it is being decoded.
    std::weak_ptr<const void> ticket {};

    bool isCancelled() const { return ticket.expired(); }
    /// By which it is remembered that there is nothing to be shown.
    QByteArray failure() const { return version + DecoderProtocol::encode(job); }
};

struct DecoderPool::Worker
{
    std::unique_ptr<HelperProcess> process;
    WorkPointer work; // Null while it is free.
    Ticket limit; // Runs while it works.
};

DecoderPool::DecoderPool(QString program, FileLanes &lanes, MainQueue &queue)
    : m_program(std::move(program))
    , m_lanes(lanes)
    , m_queue(queue)
{
}

DecoderPool::~DecoderPool() = default;

QByteArray DecoderPool::versionOf(const struct stat &status)
{
    const qint64 parts[] = { static_cast<qint64>(status.st_dev), static_cast<qint64>(status.st_ino),
                             status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec };
    return { reinterpret_cast<const char *>(parts), sizeof parts };
}

Ticket DecoderPool::version(const QUrl &url, Answer<QByteArray> answer)
{
    auto ticket = std::make_shared<Answer<QByteArray>>(std::move(answer));
    const QByteArray path = FilePath::fromUrl(url);
    m_lanes.look(
        path, m_queue, m_alive,
        [path, weak = std::weak_ptr(ticket)] {
            struct stat status = {};
            std::optional<QByteArray> version;
            if (!weak.expired() && ::stat(path.constData(), &status) == 0)
                version = versionOf(status);
            return version;
        },
        [weak = std::weak_ptr(ticket)](const std::optional<QByteArray> &version) {
            if (const auto told = weak.lock())
                (*told)(version);
        });
    return ticket;
}

Ticket DecoderPool::image(const QUrl &url, int maxPixel, Urgency urgency, Answer<Picture> answer)
{
    return ask({ .job = { Job::Kind::Image, 0, maxPixel },
                 .path = FilePath::fromUrl(url),
                 .urgency = urgency,
                 .answer = telling(&Decoded::picture, std::move(answer)) });
}

Ticket DecoderPool::imageFromData(const QByteArray &data, Answer<Picture> answer)
{
    return ask({ .job = { Job::Kind::Whole, 0, DecoderProtocol::mostWholeEdge },
                 .data = data,
                 .answer = telling(&Decoded::picture, std::move(answer)) });
}

Ticket DecoderPool::page(const QUrl &url, int page, int maxPixel, Urgency urgency,
                         Answer<Picture> answer)
{
    return ask({ .job = { Job::Kind::Page, page, maxPixel },
                 .path = FilePath::fromUrl(url),
                 .urgency = urgency,
                 .answer = telling(&Decoded::picture, std::move(answer)) });
}

Ticket DecoderPool::frames(const QUrl &url, int first, int maxPixel, Answer<QList<Frame>> answer)
{
    return ask({ .job = { Job::Kind::Frames, first, maxPixel },
                 .path = FilePath::fromUrl(url),
                 .answer = telling(&Decoded::frames, std::move(answer)) });
}

Ticket DecoderPool::archive(const QUrl &url, Answer<Listing> answer)
{
    return ask({ .job = { Job::Kind::Archive, 0, 0 },
                 .path = FilePath::fromUrl(url),
                 .answer = telling(&Decoded::listing, std::move(answer)) });
}

Ticket DecoderPool::ask(Work work)
{
    auto ticket = std::make_shared<int>(0);
    work.ticket = ticket;
    work.remote = m_lanes.isRemote(work.path);
    // What is previewed first, in order; then the rows that were asked for last, since these show.
    const auto firstRow = std::ranges::find(m_work, Urgency::Row,
                                            [](const WorkPointer &each) { return each->urgency; });
    m_work.insert(firstRow, std::make_shared<Work>(std::move(work)));
    m_rest.reset();
    m_queue.postFor(m_alive, [this] { advance(); });
    return ticket;
}

void DecoderPool::advance()
{
    using Step = Work::Step;
    m_work.remove_if(
        [](const WorkPointer &work) { return work->step != Step::Opening && work->isCancelled(); });
    std::array openFiles { 0, 0 }; // Local and remote ones.
    for (const auto &work : m_work)
        openFiles[work->remote] += work->step == Step::Waiting ? 0 : 1;
    for (const auto &work : m_work) {
        int &count = openFiles[work->remote];
        if (work->step == Step::Waiting && count < mostOpen[work->remote]) {
            ++count;
            open(work);
        }
    }
    for (auto next = m_work.begin(); next != m_work.end();) {
        const WorkPointer work = *next;
        const bool isOpen = work->step == Step::Open;
        const WorkerPointer worker = isOpen && !m_missing ? freeWorker() : nullptr;
        next = worker || (isOpen && m_missing) ? m_work.erase(next) : std::next(next);
        if (worker)
            begin(worker, work);
        else if (isOpen && m_missing)
            answer(*work, {});
    }
    restOrEnd();
}

void DecoderPool::open(const WorkPointer &work)
{
    work->step = Work::Step::Opening;
    m_lanes.look(
        work->path, m_queue, m_alive,
        [path = work->path, data = work->data, ticket = work->ticket] {
            if (ticket.expired())
                return Opened { std::make_shared<Descriptor>() };
            return data.isEmpty() ? openFile(path) : memoryWith(data);
        },
        [this, work](const Opened &opened) {
            work->step = Work::Step::Open;
            work->file = std::move(*opened.file);
            work->version = opened.version;
            work->data.clear();
            if (!work->file || m_failures.contains(work->failure())) {
                m_work.remove(work);
                answer(*work, {});
            }
            advance();
        });
}

DecoderPool::WorkerPointer DecoderPool::freeWorker()
{
    for (const auto &worker : m_workers) {
        if (!worker->work)
            return worker;
    }
    if (m_workers.size() >= processes())
        return nullptr;
    auto worker = std::make_shared<Worker>();
    worker->process = std::make_unique<HelperProcess>(m_program);
    worker->process->onMessage = [this, &to = *worker](const QByteArray &message) {
        const auto result
            = to.work ? DecoderProtocol::decodeResult(message, to.work->job) : std::nullopt;
        if (result)
            finished(to, *result);
        return result.has_value();
    };
    worker->process->onEnd = [this, weak = std::weak_ptr(worker)](HelperProcess::End how) {
        m_missing = m_missing || how == HelperProcess::End::Missing;
        loseSoon(weak, nullptr);
    };
    m_workers.push_back(worker);
    return worker;
}

void DecoderPool::begin(const WorkerPointer &worker, const WorkPointer &work)
{
    worker->work = work;
    worker->limit = m_queue.after(
        timeForAJob, [this, weak = std::weak_ptr(worker), work] { loseSoon(weak, work); });
    work->memory = HelperProcess::makeMemory(DecoderProtocol::mostBytes(work->job));
    const bool given = work->memory
        && worker->process->give(DecoderProtocol::encode(work->job),
                                 { work->file.number(), work->memory.number() });
    work->file = Descriptor();
    if (!given)
        loseSoon(worker, nullptr);
}

/// Not at once: the process, or its time limit, is still telling. Where only one work took too
/// long, its result may come at the last moment.
void DecoderPool::loseSoon(const std::weak_ptr<Worker> &worker, const WorkPointer &tooLong)
{
    m_queue.postFor(m_alive, [this, worker, tooLong] {
        const auto gone = worker.lock();
        if (gone && (!tooLong || gone->work == tooLong))
            lost(gone);
    });
}

void DecoderPool::finished(Worker &worker, const Result &result)
{
    worker.limit.reset();
    const WorkPointer work = std::exchange(worker.work, nullptr);
    if (!result.isDecoded())
        rememberFailure(*work);
    answer(*work, result);
    advance();
}

/// A file of a server may only have been slow, and what is no file comes but once.
void DecoderPool::rememberFailure(const Work &work)
{
    if (work.remote || m_missing || work.version.isEmpty())
        return;
    if (m_failures.size() >= mostFailures)
        m_failures.clear();
    m_failures.insert(work.failure());
}

/// It crashed, or took too long.
void DecoderPool::lost(const WorkerPointer &worker)
{
    if (std::erase(m_workers, worker) == 0)
        return;
    if (const WorkPointer work = std::exchange(worker->work, nullptr)) {
        rememberFailure(*work);
        answer(*work, {});
    }
    advance();
}

void DecoderPool::answer(const Work &work, const Result &result)
{
    const auto ticket = work.ticket.lock(); // Whoever is called may drop it.
    if (ticket)
        work.answer({ work.job, result, work.memory.number(), work.version });
}

/// Idle processes are kept for a while, since starting one takes longer than most pictures.
void DecoderPool::restOrEnd()
{
    const bool busy = !m_work.empty()
        || std::ranges::any_of(m_workers, [](const auto &worker) { return bool(worker->work); });
    if (busy || m_workers.empty())
        return m_rest.reset();
    m_rest = m_queue.after(
        timeOfRest, [this] { m_workers.clear(); }, MainQueue::Precision::Coarse);
}
