#include "app/AppDelegate.h"

#include "base/Workers.h"
#include "dragdrop/DroppedFiles.h"
#include "platform/Clipboard.h"
#include "platform/PictureDecoder.h"
#include "store/DroppedImage.h"

#include <QMimeDatabase>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

namespace {

bool isWebAddress(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

/// One paste on its way into the store: files, else text, else a picture. The
/// completions that are still to come hold it: it goes with the last of them.
class Paste : public std::enable_shared_from_this<Paste>
{
public:
    Paste(ShelfStore &store, const Desktop &desktop, std::weak_ptr<const void> whileAlive,
          std::function<void()> onNothing)
        : m_store(store)
        , m_queue(desktop.queue)
        , m_workers(desktop.workers)
        , m_pictures(desktop.pictures)
        , m_whileAlive(std::move(whileAlive))
        , m_onNothing(std::move(onNothing))
    {
    }
    ~Paste();
    Paste(const Paste &) = delete;
    Paste &operator=(const Paste &) = delete;
    void take(const ItemProviders &objects);

private:
    using Object = std::shared_ptr<ItemProvider>;

    void takeText(const Object &object);
    void takeImageData(const Object &object);
    void takeImage(const Object &object, QStringList types);
    void addDecoded(const Object &object, const QByteArray &data, const QStringList &otherTypes);
    void addImageData(const QByteArray &data, const QMimeType &type);
    void reach(std::function<void(ShelfStore &)> addition);

    ShelfStore &m_store;
    MainQueue &m_queue;
    Workers &m_workers;
    PictureDecoder &m_pictures;
    std::weak_ptr<const void> m_whileAlive;
    std::function<void()> m_onNothing; // For files and pictures that cannot be had.
    bool m_isOwed = false; // A picture was there, and has not come.
};

Paste::~Paste()
{
    if (!m_isOwed)
        return;
    m_queue.post([whileAlive = m_whileAlive, onNothing = std::move(m_onNothing)] {
        if (whileAlive.lock())
            onNothing();
    });
}

void Paste::take(const ItemProviders &objects)
{
    ItemProviders files;
    for (const Object &object : objects) {
        if (object->hasFileUrl())
            files.append(object);
    }
    if (!files.isEmpty())
        handleDrop(files, m_store, m_queue, m_whileAlive, m_onNothing);
    else if (!objects.isEmpty())
        takeText(objects.first());
}

void Paste::takeText(const Object &object)
{
    if (!object->hasText())
        return takeImageData(object);
    object->loadText([self = shared_from_this(), object](const std::optional<QString> &text) {
        if (text && !text->isEmpty())
            self->reach([text = *text](ShelfStore &store) { store.addText(text); });
        else
            self->takeImageData(object);
    });
}

/// The picture in its original encoding, else any other form of it.
void Paste::takeImageData(const Object &object)
{
    QStringList types = object->registeredTypes();
    types.removeIf([](const QString &type) { return !type.startsWith(QLatin1String("image/")); });
    const auto best = DroppedImage::bestType(object->registeredTypes());
    m_isOwed = best || !types.isEmpty();
    if (!best)
        return takeImage(object, types);
    const QString name = offeredName(object->registeredTypes(), *best);
    types.removeAll(name);
    object->loadData(
        name,
        [self = shared_from_this(), object, best, types](const std::optional<QByteArray> &data) {
            if (data)
                self->addImageData(*data, *best);
            else
                self->takeImage(object, types);
        });
}

void Paste::takeImage(const Object &object, QStringList types)
{
    if (types.isEmpty())
        return;
    const QString type = types.takeFirst();
    object->loadData(
        type, [self = shared_from_this(), object, types](const std::optional<QByteArray> &data) {
            self->addDecoded(object, data.value_or(QByteArray()), types);
        });
}

void Paste::addDecoded(const Object &object, const QByteArray &data, const QStringList &otherTypes)
{
    reach([self = shared_from_this(), object, data, otherTypes](ShelfStore &) {
        DroppedImage::pngFromImageData(
            data, self->m_pictures, self->m_workers,
            [self, object, otherTypes](const std::optional<QByteArray> &png) {
                if (!png)
                    return self->takeImage(object, otherTypes);
                const auto type = QStringLiteral("image/png");
                self->addImageData(*png, QMimeDatabase().mimeTypeForName(type));
            });
    });
}

void Paste::addImageData(const QByteArray &data, const QMimeType &type)
{
    reach([self = shared_from_this(), data, type](ShelfStore &store) {
        store.addImageData(data, type, [self] { self->m_isOwed = false; });
    });
}

/// Completions come on any thread, and the store may have gone by the time the
/// main thread gets to them.
void Paste::reach(std::function<void(ShelfStore &)> addition)
{
    m_queue.post([self = shared_from_this(), addition = std::move(addition)] {
        if (self->m_whileAlive.lock())
            addition(self->m_store);
    });
}

}

/// Whether there is anything to paste: what it is, and whether it can be taken,
/// shows only when its owner has answered.
bool AppDelegate::pasteIntoShelf()
{
    return m_desktop.clipboard.read(
        [this, alive = std::weak_ptr<const void>(m_alive)](const ItemProviders &objects) {
            if (alive.lock())
                std::make_shared<Paste>(m_store, m_desktop, alive, [this] {
                    m_view->showNothingTaken();
                })->take(objects);
        });
}

bool AppDelegate::copySelection()
{
    QList<Address> urls;
    for (const ShelfItem &item : m_store.selectedItems())
        urls.append(item.target());
    if (urls.isEmpty())
        return false;
    m_desktop.clipboard.write(urls);
    m_desktop.sounds.play(Sound::Tink);
    return true;
}

bool AppDelegate::addToShelf(const QList<Address> &urls, const QString &text)
{
    if (!addUrls(urls)) {
        if (text.isEmpty())
            return false;
        m_store.addText(text);
    }
    m_panel->summon();
    return true;
}

void AppDelegate::openUrls(const QList<Address> &urls)
{
    addUrls(urls);
    m_panel->summon();
}

/// Whether there was anything that a shelf takes, or may take once the desktop has told
/// where it has mounted it.
bool AppDelegate::addUrls(const QList<Address> &urls)
{
    if (!std::any_of(urls.begin(), urls.end(), m_desktop.isRemote))
        return addKnownUrls(urls);
    m_desktop.workers.run(WorkerPriority::UserInitiated,
                          [this, urls, alive = std::weak_ptr(m_alive), &queue = m_desktop.queue,
                           localFiles = m_desktop.localFiles] {
                              queue.post([this, known = localFiles(urls), alive] {
                                  if (!alive.lock())
                                      return;
                                  addKnownUrls(known);
                                  if (std::any_of(known.begin(), known.end(), m_desktop.isRemote))
                                      m_view->showNothingTaken();
                              });
                          });
    return true;
}

bool AppDelegate::addKnownUrls(const QList<Address> &urls)
{
    QList<QUrl> files;
    QStringList addresses;
    for (const Address &url : urls) {
        if (url.isLocalFile())
            files.append(url);
        else if (isWebAddress(url))
            addresses.append(QString::fromUtf8(url.text));
    }
    if (!files.isEmpty())
        m_store.add(files);
    for (const QString &address : addresses)
        m_store.addText(address);
    return !files.isEmpty() || !addresses.isEmpty();
}

/// What shortcuts of the desktop and the entries of its menus ask for; other names
/// do nothing.
void AppDelegate::performAction(const QString &name)
{
    if (name == QLatin1String("toggle")) {
        toggle();
    } else if (name == QLatin1String("paste")) {
        if (pasteIntoShelf())
            m_panel->summon();
    } else if (name == QLatin1String("new-shelf")) {
        m_store.newShelf();
        m_panel->summon();
    } else if (name == QLatin1String("settings")) {
        openSettings();
    } else if (name == QLatin1String("quit")) {
        onQuit();
    }
}
