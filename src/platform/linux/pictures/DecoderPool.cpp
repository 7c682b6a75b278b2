#include "platform/linux/pictures/DecoderPool.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "platform/linux/files/PlainFile.h"
#include "platform/linux/pictures/HelperProcess.h"

#include <algorithm>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using DecoderProtocol::Job;
using DecoderProtocol::Result;

namespace {

constexpr double timeForAJob = 10; // Seconds.
constexpr double timeOfRest = 300; // Seconds until idle processes end.
constexpr int mostOpening[2] = { 4, 2 }; // Local and remote files open, or being opened, at once.
constexpr qsizetype mostFailures = 4096; // That are remembered.
constexpr qint64 keptMapped = 256 << 10; // What is smaller is copied out of its pages.

size_t processes()
{
    return std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
}

struct Opened
{
    int file = -1;
    QByteArray version;
};

Opened openFile(const QByteArray &path)
{
    const int file = PlainFile::open(path);
    struct stat status = {};
    if (file < 0 || ::fstat(file, &status) != 0)
        return { file, {} };
    return { file, PlainFile::version(status) };
}

/// In place of a file; -1 where there is none.
int memoryWith(const QByteArray &data)
{
    const int memory = HelperProcess::makeMemory(data.size());
    if (memory < 0
        || ::pwrite(memory, data.constData(), static_cast<size_t>(data.size()), 0) == data.size())
        return memory;
    ::close(memory);
    return -1;
}

const uchar *mapped(const Result &result, int memory)
{
    if (result.bytes <= 0)
        return nullptr;
    void *const at
        = ::mmap(nullptr, static_cast<size_t>(result.bytes), PROT_READ, MAP_SHARED, memory, 0);
    return at == MAP_FAILED ? nullptr : static_cast<const uchar *>(at);
}

struct Mapping
{
    void *at;
    size_t bytes;
};

void unmap(void *mapping)
{
    const std::unique_ptr<Mapping> owned(static_cast<Mapping *>(mapping));
    ::munmap(owned->at, owned->bytes);
}

/// The pictures that lie in the memory one after the other.
QList<QImage> imagesOf(const Result &result, int memory, qint64 count, QImage::Format format)
{
    const qint64 each = static_cast<qint64>(result.width) * result.height * 4;
    const uchar *const at = result.isDecoded() ? mapped(result, memory) : nullptr;
    if (at == nullptr)
        return {};
    QList<QImage> images;
    const auto view
        = [&](qint64 index, QImageCleanupFunction cleanup = nullptr, void *info = nullptr) {
              return QImage(at + index * each, result.width, result.height,
                            static_cast<qsizetype>(result.width) * 4, format, cleanup, info);
          };
    auto mapping = std::make_unique<Mapping>(
        Mapping { const_cast<uchar *>(at), static_cast<size_t>(result.bytes) });
    if (count == 1 && each >= keptMapped)
        return { view(0, unmap, mapping.release()) };
    for (qint64 i = 0; i < count; ++i)
        images.append(view(i).copy());
    unmap(mapping.release());
    return images;
}

std::optional<PictureDecoder::Listing> listingOf(const Result &result, int memory)
{
    const uchar *const at = result.isDecoded() ? mapped(result, memory) : nullptr;
    if (at == nullptr)
        return std::nullopt;
    const QByteArray bytes(reinterpret_cast<const char *>(at),
                           static_cast<qsizetype>(result.bytes)); // A copy nobody else can write.
    ::munmap(const_cast<uchar *>(at), static_cast<size_t>(result.bytes));
    return DecoderProtocol::decodeListing(bytes);
}

}

struct DecoderPool::Work
{
    Job job;
    QByteArray path {};
    QByteArray data {}; // In place of a file, until it is opened.
    Urgency urgency = Urgency::Preview;
    Answer<Picture> picture {};
    Answer<QList<Frame>> frames {};
    Answer<Listing> listing {};

    quint64 number = 0; // Rises with each that is asked for.
    bool remote = false;
    int file = -1; // Once it is open.
    QByteArray version {};
    int memory = -1; // For the result, once it is being decoded.
    std::weak_ptr<const void> ticket {};

    bool isCancelled() const { return ticket.expired(); }
    void closeFile() { close(file); }
    ~Work()
    {
        close(file);
        close(memory);
    }

    /// By which it is remembered that there is nothing to be shown.
    QByteArray failure() const { return version + DecoderProtocol::encode(job); }

private:
    static void close(int &open)
    {
        if (const int closed = std::exchange(open, -1); closed >= 0)
            ::close(closed);
    }
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

QString DecoderPool::installedProgram()
{
    return HelperProcess::installedProgram(QStringLiteral("vantle-decoder"));
}

Ticket DecoderPool::version(const QUrl &url, Answer<QByteArray> answer)
{
    auto ticket = std::make_shared<Answer<QByteArray>>(std::move(answer));
    const QByteArray path = FilePath::fromUrl(url);
    m_lanes.run(
        path,
        [path, &queue = m_queue, weak = std::weak_ptr(ticket), alive = std::weak_ptr(m_alive)] {
            if (weak.expired())
                return;
            struct stat status = {};
            std::optional<QByteArray> version;
            if (::stat(path.constData(), &status) == 0)
                version = PlainFile::version(status);
            if (alive.expired())
                return;
            queue.post([weak, version] {
                if (const auto told = weak.lock())
                    (*told)(version);
            });
        });
    return ticket;
}

Ticket DecoderPool::image(const QUrl &url, int maxPixel, Urgency urgency, Answer<Picture> answer)
{
    return ask({ .job = { Job::Kind::Image, 0, maxPixel },
                 .path = FilePath::fromUrl(url),
                 .urgency = urgency,
                 .picture = std::move(answer) });
}

Ticket DecoderPool::imageFromData(const QByteArray &data, Answer<Picture> answer)
{
    return ask({ .job = { Job::Kind::Whole, 0, DecoderProtocol::mostWholeEdge },
                 .data = data,
                 .picture = std::move(answer) });
}

Ticket DecoderPool::page(const QUrl &url, int page, int maxPixel, Urgency urgency,
                         Answer<Picture> answer)
{
    return ask({ .job = { Job::Kind::Page, page, maxPixel },
                 .path = FilePath::fromUrl(url),
                 .urgency = urgency,
                 .picture = std::move(answer) });
}

Ticket DecoderPool::frames(const QUrl &url, int first, int maxPixel, Answer<QList<Frame>> answer)
{
    return ask({ .job = { Job::Kind::Frames, first, maxPixel },
                 .path = FilePath::fromUrl(url),
                 .frames = std::move(answer) });
}

Ticket DecoderPool::archive(const QUrl &url, Answer<Listing> answer)
{
    return ask({ .job = { Job::Kind::Archive, 0, 0 },
                 .path = FilePath::fromUrl(url),
                 .listing = std::move(answer) });
}

Ticket DecoderPool::ask(Work work)
{
    auto ticket = std::make_shared<int>(0);
    work.ticket = ticket;
    work.number = ++m_asked;
    work.remote = m_lanes.isRemote(work.path);
    m_waiting.push_back(std::make_shared<Work>(std::move(work)));
    m_rest.reset();
    m_queue.post([this, alive = std::weak_ptr(m_alive)] {
        if (alive.lock())
            advance();
    });
    return ticket;
}

void DecoderPool::advance()
{
    const auto isCancelled = [](const WorkPointer &work) { return work->isCancelled(); };
    m_waiting.remove_if(isCancelled);
    for (const auto &work : m_ready) {
        if (work->isCancelled()) {
            work->closeFile();
            --m_opening[work->remote ? 1 : 0];
        }
    }
    m_ready.remove_if(isCancelled);
    openWaiting();
    decodeReady();
    restOrEnd();
}

/// What is previewed first, in order; then the rows that were asked for last, since these show.
void DecoderPool::openWaiting()
{
    const auto isNext = [this](const WorkPointer &work, Urgency urgency) {
        const int kind = work->remote ? 1 : 0;
        return work->urgency == urgency && m_opening[kind] < mostOpening[kind];
    };
    for (;;) {
        auto next = std::ranges::find_if(
            m_waiting, [&](const WorkPointer &work) { return isNext(work, Urgency::Preview); });
        if (next == m_waiting.end()) {
            const auto last
                = std::find_if(m_waiting.rbegin(), m_waiting.rend(),
                               [&](const WorkPointer &work) { return isNext(work, Urgency::Row); });
            if (last == m_waiting.rend())
                return;
            next = std::prev(last.base());
        }
        const WorkPointer work = *next;
        m_waiting.erase(next);
        open(work);
    }
}

void DecoderPool::open(const WorkPointer &work)
{
    ++m_opening[work->remote ? 1 : 0];
    m_lanes.run(work->path,
                [this, work = work, &queue = m_queue, alive = std::weak_ptr(m_alive)]() mutable {
                    if (alive.expired())
                        return;
                    Opened result;
                    if (!work->isCancelled())
                        result = work->data.isEmpty() ? openFile(work->path)
                                                      : Opened { memoryWith(work->data), {} };
                    // Given away: what it holds belongs to the main thread.
                    queue.post([this, work = std::move(work), result, alive] {
                        if (alive.lock())
                            opened(work, result.file, result.version);
                        else if (result.file >= 0)
                            ::close(result.file);
                    });
                });
}

void DecoderPool::opened(const WorkPointer &work, int file, const QByteArray &version)
{
    work->file = file;
    work->version = version;
    work->data.clear();
    const bool known = m_failures.contains(work->failure());
    if (file >= 0 && !m_missing && !known && !work->isCancelled()) {
        m_ready.push_back(work);
    } else {
        work->closeFile();
        --m_opening[work->remote ? 1 : 0];
        answer(*work, {});
    }
    advance();
}

void DecoderPool::decodeReady()
{
    while (!m_ready.empty() && !m_missing) {
        const WorkerPointer worker = freeWorker();
        if (!worker)
            return;
        auto next = std::ranges::find(m_ready, Urgency::Preview,
                                      [](const WorkPointer &work) { return work->urgency; });
        if (next == m_ready.end())
            next = std::ranges::max_element(m_ready, {},
                                            [](const WorkPointer &work) { return work->number; });
        const WorkPointer work = *next;
        m_ready.erase(next);
        --m_opening[work->remote ? 1 : 0];
        begin(worker, work);
    }
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
    const bool given = work->memory >= 0
        && worker->process->give(DecoderProtocol::encode(work->job), { work->file, work->memory });
    work->closeFile();
    if (!given)
        loseSoon(worker, nullptr);
}

/// Not at once: the process, or its time limit, is still telling. Where only one work took too
/// long, its result may come at the last moment.
void DecoderPool::loseSoon(const std::weak_ptr<Worker> &worker, const WorkPointer &tooLong)
{
    m_queue.post([this, worker, tooLong, alive = std::weak_ptr(m_alive)] {
        const auto gone = worker.lock();
        if (gone && alive.lock() && (!tooLong || gone->work == tooLong))
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
    if (m_missing) {
        for (const WorkPointer &work : std::exchange(m_ready, {})) {
            work->closeFile();
            --m_opening[work->remote ? 1 : 0];
            answer(*work, {});
        }
    }
    advance();
}

void DecoderPool::answer(const Work &work, const Result &result)
{
    const auto ticket = work.ticket.lock(); // Whoever is called may drop it.
    if (!ticket)
        return;
    if (work.listing)
        return work.listing(listingOf(result, work.memory));
    const auto format = pixelFormat(work.job);
    if (work.frames) {
        if (result.isDecoded() && result.frames == 0)
            return work.frames(QList<Frame>()); // Past the end.
        const auto images = imagesOf(result, work.memory, result.frames, format);
        if (images.isEmpty())
            return work.frames(std::nullopt);
        QList<Frame> frames;
        for (qsizetype i = 0; i < images.size(); ++i)
            frames.append({ images[i], result.milliseconds[static_cast<size_t>(i)] });
        return work.frames(frames);
    }
    const auto images = imagesOf(result, work.memory, 1, format);
    if (images.isEmpty())
        return work.picture(std::nullopt);
    work.picture(Picture { images.first(), QSize(result.wholeWidth, result.wholeHeight),
                           result.count, work.version });
}

/// Idle processes are kept for a while, since starting one takes longer than most pictures.
void DecoderPool::restOrEnd()
{
    const bool busy = !m_waiting.empty() || !m_ready.empty() || m_opening[0] + m_opening[1] > 0
        || std::ranges::any_of(m_workers, [](const auto &worker) { return bool(worker->work); });
    if (busy || m_workers.empty())
        return m_rest.reset();
    m_rest = m_queue.after(
        timeOfRest, [this] { m_workers.clear(); }, MainQueue::Precision::Coarse);
}
