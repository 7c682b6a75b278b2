#include "platform/linux/x11/DropReading.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "platform/linux/files/LocalFiles.h"
#include "platform/linux/transfer/DropFormats.h"
#include "platform/linux/transfer/PortalFiles.h"

#include <algorithm>
#include <system_error>
#include <thread>

namespace {

using Outcome = SelectionReader::Outcome;

constexpr qsizetype keyCap = 4096; // Bytes.
constexpr qsizetype textCap = 16 << 20;
constexpr qsizetype listCap = 64 << 20;
constexpr qsizetype imageCap = 256 << 20;

/// Says when the last of a drop's objects has gone.
using Hold = std::shared_ptr<const void>;

bool isFile(const QUrl &url)
{
    return url.isLocalFile() || LocalFiles::isRemote(url);
}

/// One address of a list, known since before the drop was announced. A file that has no
/// local path counts as one that could not be had.
class ListedObject final : public ItemProvider
{
public:
    ListedObject(QUrl url, Hold hold)
        : m_url(std::move(url))
        , m_hold(std::move(hold))
    {
    }
    QStringList registeredTypes() const override { return { QLatin1String(DropFormats::uriList) }; }
    bool hasFileUrl() const override { return isFile(m_url); }
    bool hasText() const override { return false; }
    bool hasUrl() const override { return true; }
    void loadUrl(std::function<void(std::optional<QUrl>)> completion) override
    {
        completion(m_url);
    }
    void loadText(std::function<void(std::optional<QString>)> completion) override
    {
        completion(std::nullopt);
    }
    void loadData(const QString &,
                  std::function<void(std::optional<QByteArray>)> completion) override
    {
        completion(std::nullopt);
    }

private:
    QUrl m_url;
    Hold m_hold;
};

/// Reads the first of these types that can be understood. A source that has
/// hung, died or sent too much once is not asked again for the same thing.
template<typename T>
std::optional<T> readFirst(SelectionReader &reader, const QStringList &types,
                           std::optional<T> (*parse)(const QString &, const QByteArray &))
{
    for (const QString &type : types) {
        const auto answer = reader.read(type.toUtf8(), textCap);
        if (answer.outcome != Outcome::Data && answer.outcome != Outcome::Refused)
            break;
        if (auto value = answer.data.isEmpty() ? std::nullopt : parse(type, answer.data))
            return value;
    }
    return std::nullopt;
}

/// Everything that a source offers besides files, each form read when it is asked for.
class OfferedObject final : public ItemProvider
{
public:
    OfferedObject(std::shared_ptr<DropReading> reading, QStringList types, std::optional<QUrl> url,
                  Hold hold)
        : m_reading(std::move(reading))
        , m_types(std::move(types))
        , m_url(std::move(url))
        , m_hold(std::move(hold))
    {
    }
    QStringList registeredTypes() const override { return m_types; }
    bool hasFileUrl() const override { return false; }
    bool hasText() const override { return !DropFormats::textTypes(m_types).isEmpty(); }
    bool hasUrl() const override { return m_url || !DropFormats::urlTypes(m_types).isEmpty(); }

    void loadUrl(std::function<void(std::optional<QUrl>)> completion) override
    {
        if (m_url) {
            m_reading->gained();
            return completion(m_url);
        }
        m_reading->load<QUrl>(
            [types = DropFormats::urlTypes(m_types)](SelectionReader &reader) {
                return readFirst<QUrl>(reader, types, DropFormats::url);
            },
            std::move(completion));
    }
    void loadText(std::function<void(std::optional<QString>)> completion) override
    {
        m_reading->load<QString>(
            [types = DropFormats::textTypes(m_types)](SelectionReader &reader) {
                return readFirst<QString>(reader, types, DropFormats::text);
            },
            std::move(completion));
    }
    void loadData(const QString &type,
                  std::function<void(std::optional<QByteArray>)> completion) override
    {
        m_reading->load<QByteArray>(
            [type = type.toUtf8()](SelectionReader &reader) -> std::optional<QByteArray> {
                auto answer = reader.read(type, imageCap);
                if (answer.outcome != Outcome::Data || answer.data.isEmpty())
                    return std::nullopt;
                return std::move(answer.data);
            },
            std::move(completion));
    }

private:
    std::shared_ptr<DropReading> m_reading;
    QStringList m_types;
    std::optional<QUrl> m_url;
    Hold m_hold;
};

/// What the portal hands over for a sandboxed source, whose own list would name
/// places inside its sandbox.
std::optional<QList<QUrl>> portalUrls(SelectionReader &reader, const QStringList &types)
{
    const auto type = std::find_if(types.begin(), types.end(), [](const QString &name) {
        return name == QLatin1String(DropFormats::portalTransfer)
            || name == QLatin1String(DropFormats::portalFiles);
    });
    if (type == types.end())
        return std::nullopt;
    auto key = reader.read(type->toUtf8(), keyCap).data;
    while (key.endsWith('\0'))
        key.chop(1);
    const auto paths = key.isEmpty() ? std::nullopt : PortalFiles::retrieve(key);
    if (!paths)
        return std::nullopt;
    QList<QUrl> urls;
    for (const QByteArray &path : *paths)
        urls.append(FilePath::toUrl(FilePath::standardized(path)));
    return urls;
}

QList<QUrl> listedUrls(SelectionReader &reader, const QStringList &types)
{
    if (const auto urls = portalUrls(reader, types))
        return *urls;
    // Some file managers copy in a form of their own only. Its first line tells a cut
    // from a copy: neither is an address, and both are taken as a reference.
    const auto &[gnome, mate] = DropFormats::copiedFiles;
    for (const char *type : { DropFormats::uriList, gnome, mate }) {
        if (types.contains(QLatin1String(type)))
            return DropFormats::urls(reader.read(type, listCap).data);
    }
    return {};
}

constexpr char clipboardSelection[] = "CLIPBOARD";

}

DropReading::DropReading(MainQueue &queue, Source source, double secondsAtMost, Listener listener)
    : m_queue(queue)
    , m_source(std::move(source))
    , m_deadline(SelectionReader::Clock::now()
                 + std::chrono::milliseconds(static_cast<int>(secondsAtMost * 1000)))
    , m_listener(std::move(listener))
{
}

DropReading::Source DropReading::drop(QStringList types, quint32 time)
{
    return { "XdndSelection", std::move(types), time };
}

DropReading::Source DropReading::clipboard()
{
    return { clipboardSelection, {}, XCB_CURRENT_TIME };
}

void DropReading::start()
{
    try {
        std::thread([self = shared_from_this()] { self->run(); }).detach();
    } catch (const std::system_error &) { // No thread is to be had.
        m_ended = true;
        post([self = shared_from_this()] { self->m_listener.onEnded(Gain::Nothing); });
    }
}

void DropReading::run()
{
    SelectionReader reader(m_source.selection, m_source.time, m_deadline);
    post([self = shared_from_this(), found = objects(reader)] {
        if (self->m_listener.onObjects)
            self->m_listener.onObjects(found);
    });
    runJobs(reader);
    post([self = shared_from_this()] { self->m_listener.onEnded(self->m_gain); });
    const std::lock_guard guard(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

/// One kind of objects for a drop: its files with the addresses that stand among
/// them, else several addresses, else one object in all its forms. Addresses on the
/// clipboard stand there as text as well, which is what a paste takes.
ItemProviders DropReading::objects(SelectionReader &reader)
{
    const Hold hold(this, [self = shared_from_this()](const void *) {
        const std::lock_guard guard(self->m_mutex);
        self->m_closed = true;
        self->m_changed.notify_all();
    });
    const bool isClipboard = m_source.selection == clipboardSelection;
    QStringList types = isClipboard ? reader.types() : m_source.types;
    // Browsers offer a copied picture as a page too, which is not meant as text.
    if (isClipboard)
        types.removeAll(QStringLiteral("text/html"));
    if (types.isEmpty())
        return {};
    auto urls = listedUrls(reader, types);
    const bool hasFiles = std::any_of(urls.begin(), urls.end(), isFile);
    ItemProviders objects;
    if (hasFiles || (urls.size() > 1 && !isClipboard)) {
        if (hasFiles)
            urls = LocalFiles::examined(urls);
        for (const QUrl &url : urls) {
            if (url.isLocalFile() || !isFile(url))
                gained();
            objects.append(std::make_shared<ListedObject>(url, hold));
        }
        return objects;
    }
    const auto url = urls.isEmpty() ? std::nullopt : std::optional(urls.first());
    objects.append(std::make_shared<OfferedObject>(shared_from_this(), types, url, hold));
    return objects;
}

void DropReading::runJobs(SelectionReader &reader)
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_closed || m_givenUp || !m_jobs.empty(); });
        if (m_givenUp || m_jobs.empty())
            return;
        const Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        m_giveUpCurrent = job.giveUp;
        lock.unlock();
        job.run(reader);
        lock.lock();
        m_giveUpCurrent = nullptr;
    }
}

void DropReading::enqueue(Job job)
{
    {
        const std::lock_guard guard(m_mutex);
        if (!m_givenUp) {
            m_jobs.push_back(std::move(job));
            m_changed.notify_all();
            return;
        }
    }
    job.giveUp();
}

void DropReading::giveUp()
{
    std::unique_lock lock(m_mutex);
    m_givenUp = true;
    auto jobs = std::exchange(m_jobs, {});
    const auto current = std::exchange(m_giveUpCurrent, nullptr);
    m_changed.notify_all();
    lock.unlock();
    if (current)
        current();
    for (const Job &job : jobs)
        job.giveUp();
}

bool DropReading::waitForEnd(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [this] { return m_ended; });
}

void DropReading::gained()
{
    const std::lock_guard guard(m_mutex);
    m_gain = Gain::Something;
}

/// The queue may be gone once the drop was given up.
void DropReading::post(std::function<void()> task)
{
    const std::lock_guard guard(m_mutex);
    if (m_givenUp)
        return;
    m_queue.post([self = shared_from_this(), task = std::move(task)] {
        bool givenUp = false;
        {
            const std::lock_guard taskGuard(self->m_mutex);
            givenUp = self->m_givenUp;
        }
        if (!givenUp)
            task();
    });
}
