#include "dragdrop/DroppedFiles.h"

#include "base/MainQueue.h"
#include "store/DroppedImage.h"
#include "store/ShelfStore.h"

#include <QMimeDatabase>

#include <algorithm>
#include <atomic>
#include <functional>

void DroppedFiles::add(const QUrl &url, int index)
{
    const std::lock_guard guard(m_lock);
    m_found.emplace_back(index, url);
}

bool DroppedFiles::isEmpty() const
{
    const std::lock_guard guard(m_lock);
    return m_found.empty();
}

QList<QUrl> DroppedFiles::inOrder() const
{
    const std::lock_guard guard(m_lock);
    auto sorted = m_found;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    QList<QUrl> urls;
    urls.reserve(static_cast<qsizetype>(sorted.size()));
    for (const auto &found : sorted)
        urls.append(found.second);
    return urls;
}

QString offeredName(const QStringList &offered, const QMimeType &type)
{
    const QMimeDatabase types;
    for (const QString &name : offered) {
        if (types.mimeTypeForName(name) == type)
            return name;
    }
    return type.name();
}

namespace {

/// Calls its notification when everybody who entered has left. Whoever makes it
/// counts as having entered.
class Group
{
public:
    explicit Group(std::function<void()> notify)
        : m_notify(std::move(notify))
    {
    }
    void enter() { ++m_inside; }
    void leave()
    {
        if (--m_inside == 0)
            m_notify();
    }

private:
    std::atomic<int> m_inside = 1;
    std::function<void()> m_notify;
};

/// One drop on its way into the store. The completions that are still to come
/// hold it: it goes with the last of them.
class Drop : public std::enable_shared_from_this<Drop>
{
public:
    Drop(ShelfStore &store, MainQueue &queue, std::weak_ptr<const void> whileAlive,
         std::function<void()> onNothing)
        : m_store(store)
        , m_queue(queue)
        , m_whileAlive(std::move(whileAlive))
        , m_onNothing(std::move(onNothing))
    {
    }
    ~Drop();
    Drop(const Drop &) = delete;
    Drop &operator=(const Drop &) = delete;
    void take(const ItemProviders &providers);

private:
    void takeFile(ItemProvider &provider, int index, const std::shared_ptr<Group> &group);
    void takeImage(ItemProvider &provider, const QMimeType &type);
    void takeText(ItemProvider &provider);
    void takeUrl(ItemProvider &provider);
    using Addition = std::function<void(ShelfStore &)>;
    void reach(Addition addition);
    void gain(Addition addition);

    ShelfStore &m_store;
    MainQueue &m_queue;
    std::weak_ptr<const void> m_whileAlive;
    std::function<void()> m_onNothing;
    DroppedFiles m_files;
    bool m_hasGained = false; // Main thread.
};

Drop::~Drop()
{
    if (m_hasGained)
        return;
    m_queue.post([whileAlive = m_whileAlive, onNothing = std::move(m_onNothing)] {
        if (whileAlive.lock())
            onNothing();
    });
}

void Drop::take(const ItemProviders &providers)
{
    auto group = std::make_shared<Group>([self = shared_from_this()] {
        if (self->m_files.isEmpty())
            return;
        self->gain([self](ShelfStore &store) { store.add(self->m_files.inOrder()); });
    });
    int index = 0;
    for (const auto &provider : providers) {
        if (provider->hasFileUrl())
            takeFile(*provider, index, group);
        else if (const auto type = DroppedImage::bestType(provider->registeredTypes()))
            takeImage(*provider, *type);
        else if (provider->hasText())
            takeText(*provider);
        else if (provider->hasUrl())
            takeUrl(*provider);
        ++index;
    }
    group->leave();
}

void Drop::takeFile(ItemProvider &provider, int index, const std::shared_ptr<Group> &group)
{
    group->enter();
    provider.loadUrl([self = shared_from_this(), index, group](const std::optional<Address> &url) {
        if (url && url->isLocalFile())
            self->m_files.add(*url, index);
        group->leave();
    });
}

void Drop::takeImage(ItemProvider &provider, const QMimeType &type)
{
    provider.loadData(offeredName(provider.registeredTypes(), type),
                      [self = shared_from_this(), type](const std::optional<QByteArray> &data) {
                          if (!data)
                              return;
                          self->reach([self, data = *data, type](ShelfStore &store) {
                              store.addImageData(data, type, [self] { self->m_hasGained = true; });
                          });
                      });
}

void Drop::takeText(ItemProvider &provider)
{
    provider.loadText([self = shared_from_this()](const std::optional<QString> &text) {
        if (text)
            self->gain([text = *text](ShelfStore &store) { store.addText(text); });
    });
}

void Drop::takeUrl(ItemProvider &provider)
{
    provider.loadUrl([self = shared_from_this()](const std::optional<Address> &url) {
        if (url)
            self->gain(
                [text = QString::fromUtf8(url->text)](ShelfStore &store) { store.addText(text); });
    });
}

/// Completions come on any thread, and the store may have gone by the time the
/// main thread gets to them.
void Drop::reach(Addition addition)
{
    m_queue.post([self = shared_from_this(), addition = std::move(addition)] {
        if (self->m_whileAlive.lock())
            addition(self->m_store);
    });
}

/// Where something comes of it for certain.
void Drop::gain(Addition addition)
{
    reach([self = shared_from_this(), addition = std::move(addition)](ShelfStore &store) {
        self->m_hasGained = true;
        addition(store);
    });
}

}

void handleDrop(const ItemProviders &providers, ShelfStore &store, MainQueue &queue,
                const std::weak_ptr<const void> &whileAlive, std::function<void()> onNothing)
{
    std::make_shared<Drop>(store, queue, whileAlive, std::move(onNothing))->take(providers);
}
