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

constexpr qsizetype keyCap = 4096; // Bytes.
constexpr qsizetype textCap = 16 << 20;
constexpr qsizetype listCap = 64 << 20;
constexpr qsizetype imageCap = 256 << 20;

bool isFile(const QUrl &url)
{
    return url.isLocalFile() || LocalFiles::isRemote(url);
}

/// Reads the first of these types that can be understood. A source that has
/// hung, died or sent too much once is not asked again for the same thing.
template<typename T>
std::optional<T> readFirst(SelectionReader &reader, const QStringList &types,
                           std::optional<T> (*parse)(const QString &, const QByteArray &))
{
    for (const QString &type : types) {
        const auto answer = reader.read(type.toUtf8(), textCap);
        if (!answer)
            break;
        if (auto value = answer->isEmpty() ? std::nullopt : parse(type, *answer))
            return value;
    }
    return std::nullopt;
}

/// One address of a list, known since before the drop was announced, or everything that a
/// source offers besides files, each form read when it is asked for.
class DroppedObject final : public ItemProvider
{
public:
    /// The reading's thread goes on while an object holds it.
    DroppedObject(std::shared_ptr<DropReading> reading, QStringList types,
                  std::optional<Address> url)
        : m_reading(std::move(reading))
        , m_types(std::move(types))
        , m_url(std::move(url))
    {
    }
    QStringList registeredTypes() const override { return m_types; }
    bool hasFileUrl() const override { return m_url && isFile(*m_url); }
    bool hasText() const override { return !DropFormats::textTypes(m_types).isEmpty(); }
    bool hasUrl() const override { return m_url || !DropFormats::urlTypes(m_types).isEmpty(); }

    void loadUrl(std::function<void(std::optional<Address>)> completion) override
    {
        if (m_url) {
            // A file that has no local path counts as one that could not be had.
            if (!LocalFiles::isRemote(*m_url))
                m_reading->gained();
            return completion(m_url);
        }
        m_reading->load<Address>(
            [types = DropFormats::urlTypes(m_types)](SelectionReader &reader) {
                return readFirst<Address>(reader, types, DropFormats::url);
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
            [type = type.toUtf8()](SelectionReader &reader) {
                auto answer = reader.read(type, imageCap);
                return answer && answer->isEmpty() ? std::nullopt : answer;
            },
            std::move(completion));
    }

private:
    std::shared_ptr<DropReading> m_reading;
    QStringList m_types;
    std::optional<Address> m_url;
};

/// What the portal hands over for a sandboxed source, whose own list would name
/// places inside its sandbox.
std::optional<QList<Address>> portalUrls(SelectionReader &reader, const QStringList &types)
{
    const auto type = std::find_if(types.begin(), types.end(), [](const QString &name) {
        return name == QLatin1String(DropFormats::portalTransfer)
            || name == QLatin1String(DropFormats::portalFiles);
    });
    if (type == types.end())
        return std::nullopt;
    auto key = reader.read(type->toUtf8(), keyCap).value_or(QByteArray());
    while (key.endsWith('\0'))
        key.chop(1);
    const auto paths = key.isEmpty() ? std::nullopt : PortalFiles::retrieve(key);
    if (!paths)
        return std::nullopt;
    QList<Address> urls;
    for (const QByteArray &path : *paths)
        urls.append(FilePath::toUrl(FilePath::standardized(path)));
    return urls;
}

QList<Address> listedUrls(SelectionReader &reader, const QStringList &types)
{
    if (const auto urls = portalUrls(reader, types))
        return *urls;
    // Some file managers copy in a form of their own only. Its first line tells a cut
    // from a copy: neither is an address, and both are taken as a reference.
    const auto &[gnome, mate] = DropFormats::copiedFiles;
    for (const char *type : { DropFormats::uriList, gnome, mate }) {
        if (types.contains(QLatin1String(type)))
            return DropFormats::urls(reader.read(type, listCap).value_or(QByteArray()));
    }
    return {};
}

}

DropReading::DropReading(MainQueue &queue, std::optional<Drop> drop, double secondsAtMost,
                         Listener listener)
    : m_queue(queue)
    , m_drop(std::move(drop))
    , m_deadline(SelectionReader::Clock::now()
                 + std::chrono::milliseconds(static_cast<int>(secondsAtMost * 1000)))
    , m_listener(std::move(listener))
{
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
    SelectionReader reader(m_drop ? "XdndSelection" : "CLIPBOARD",
                           m_drop ? m_drop->time : XCB_CURRENT_TIME, m_deadline);
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
    // Says when the last of the objects has gone.
    const std::shared_ptr<DropReading> hold(this, [self = shared_from_this()](DropReading *) {
        const std::lock_guard guard(self->m_mutex);
        self->m_closed = true;
        self->m_changed.notify_all();
    });
    QStringList types = m_drop ? m_drop->types : reader.types();
    // Browsers offer a copied picture as a page too, which is not meant as text.
    if (!m_drop)
        types.removeAll(QStringLiteral("text/html"));
    if (types.isEmpty())
        return {};
    const auto urls = listedUrls(reader, types);
    const bool hasFiles = std::any_of(urls.begin(), urls.end(), isFile);
    if (!hasFiles && (urls.size() < 2 || !m_drop))
        return { std::make_shared<DroppedObject>(
            hold, types, urls.isEmpty() ? std::nullopt : std::optional(urls.first())) };
    ItemProviders objects;
    for (const Address &url : hasFiles ? LocalFiles::examined(urls) : urls)
        objects.append(std::make_shared<DroppedObject>(
            hold, QStringList { QLatin1String(DropFormats::uriList) }, url));
    return objects;
}

void DropReading::runJobs(SelectionReader &reader)
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_closed || m_givenUp || !m_jobs.empty(); });
        if (m_givenUp || m_jobs.empty())
            return;
        m_current = std::move(m_jobs.front());
        const Job job = m_current;
        m_jobs.pop_front();
        lock.unlock();
        job(&reader);
        lock.lock();
        m_current = nullptr;
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
    job(nullptr);
}

void DropReading::giveUp()
{
    std::unique_lock lock(m_mutex);
    m_givenUp = true;
    auto jobs = std::exchange(m_jobs, {});
    if (m_current)
        jobs.push_front(std::exchange(m_current, nullptr));
    m_changed.notify_all();
    lock.unlock();
    for (const Job &job : jobs)
        job(nullptr);
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
