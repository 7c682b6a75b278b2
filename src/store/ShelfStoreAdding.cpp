#include "store/ShelfStore.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "platform/Bookmarks.h"
#include "store/Addresses.h"
#include "store/Characters.h"
#include "store/DroppedImage.h"
#include "store/WebLocation.h"

#include <QRegularExpression>

#include <algorithm>
#include <cerrno>

namespace {

/// Seconds of the Unix epoch at the start of 2001, from which stored dates count.
constexpr double unixAtReference = 978307200;
constexpr qsizetype longestPreview = 60;
constexpr qsizetype longestLinkTitle = 80;
constexpr int mostNames = 100; // To try; four hexadecimal digits have 65,536.

bool isNewline(QChar character)
{
    const char16_t unit = character.unicode();
    return (unit >= u'\n' && unit <= u'\r') || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

bool isBlank(QChar character)
{
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

/// The first line that is not empty, cut; none if that line holds blanks only.
std::optional<QString> previewOf(const QString &text)
{
    const auto first = std::find_if_not(text.begin(), text.end(), isNewline);
    auto end = std::find_if(first, text.end(), isNewline);
    const auto begin = std::find_if_not(first, end, isBlank);
    while (end != begin && isBlank(*(end - 1)))
        --end;
    const QString line = text.mid(begin - text.begin(), end - begin);
    return line.isEmpty() ? std::nullopt : std::optional(Characters::first(line, longestPreview));
}

/// Writes a file under a name that is free: two of one kind and second differ by the
/// random part alone, and a name that is taken is the file of another entry. The
/// path; none where it cannot be written.
std::optional<QByteArray> writeManaged(const QByteArray &start, const QString &extension,
                                       const QByteArray &bytes)
{
    for (int tries = 0; tries < mostNames; ++tries) {
        const QByteArray random = QUuid::createUuid().toByteArray(QUuid::WithoutBraces).left(4);
        const QByteArray path = start + random.toUpper() + '.' + extension.toUtf8();
        if (NativeFile::writeNew(path, bytes))
            return path;
        if (errno != EEXIST)
            break;
    }
    return std::nullopt;
}

}

void ShelfStore::add(const QList<QUrl> &urls)
{
    auto next = items.value();
    auto known = Addresses::keys(next); // A set: adding many must not go quadratic.
    for (const QUrl &url : urls) {
        if (FilePath::fromUrl(url).isEmpty() || !Addresses::insertNew(known, url))
            continue;
        next.append(newItem(url));
    }
    if (next.size() == items.value().size())
        return;
    commit(std::move(next));
    m_sounds.play(Sound::Pop);
}

void ShelfStore::addText(const QString &text)
{
    if (!text.isValidUtf16())
        return;
    if (const auto address = WebAddress::typed(text)) {
        addLink(*address);
        return;
    }
    if (const auto path = writeManaged(fileStart(QStringLiteral("dropped_text")),
                                       QStringLiteral("txt"), text.toUtf8()))
        insertDropped(*path, previewOf(text));
}

void ShelfStore::addLink(const WebAddress &address)
{
    const auto &list = items.value();
    if (std::any_of(list.begin(), list.end(),
                    [&](const ShelfItem &item) { return item.link == address; }))
        return;
    if (const auto path = writeManaged(fileStart(QStringLiteral("dropped_link")),
                                       QStringLiteral("webloc"), WebLocation::encode(address)))
        insertDropped(*path, linkTitle(address), address);
}

/// The host as it was typed; the letters of one that was encoded.
QString ShelfStore::linkTitle(const WebAddress &address)
{
    static const QRegularExpression hostOf(
        QStringLiteral("^[^:/?#]+://(?:[^/?#]*@)?\\[?((?<=\\[)[^\\]/?#]*|[^:/?#]*)"));
    const QUrl url = address.url();
    QString title = hostOf.match(address.text()).captured(1);
    if (title.contains(QLatin1String("xn--"), Qt::CaseInsensitive))
        title = url.host();
    if (title.isEmpty())
        title = address.text();
    if (title.startsWith(QLatin1String("www.")))
        title.remove(0, 4);
    QString path = url.path(QUrl::FullyDecoded);
    while (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return Characters::first(title + path, longestLinkTitle);
}

void ShelfStore::addImage(const QImage &image)
{
    m_workers.run(WorkerPriority::UserInitiated, [image, add = addingImage(QStringLiteral("png"))] {
        add(DroppedImage::pngFromImage(image));
    });
}

void ShelfStore::addImageData(const QByteArray &data, const QMimeType &type,
                              std::function<void()> onAdded)
{
    const bool isTiff = type.inherits(QStringLiteral("image/tiff"));
    const QString suffix = isTiff ? QString() : type.preferredSuffix();
    const auto add
        = addingImage(suffix.isEmpty() ? QStringLiteral("png") : suffix, std::move(onAdded));
    if (isTiff)
        DroppedImage::pngFromImageData(data, m_pictures, m_workers, add);
    else
        m_workers.run(WorkerPriority::UserInitiated, [data, add] { add(data); });
}

/// What writes the file, on a worker. The entry lands on whichever shelf is current when the file
/// is there.
ShelfStore::Bytes ShelfStore::addingImage(const QString &extension, std::function<void()> onAdded)
{
    return [this, &queue = m_queue, alive = std::weak_ptr(m_alive),
            start = fileStart(QStringLiteral("dropped_image")), extension,
            onAdded = std::move(onAdded)](const std::optional<QByteArray> &content) {
        const auto path = content ? writeManaged(start, extension, *content) : std::nullopt;
        if (!path)
            return;
        queue.post([this, alive, path = *path, onAdded] {
            if (!alive.lock())
                return;
            insertDropped(path);
            if (onAdded)
                onAdded();
        });
    };
}

QUrl ShelfStore::makeDemoFile()
{
    const QString name = m_texts.text(QStringLiteral("demo_file_name")) + QStringLiteral(".txt");
    const QByteArray path = droppedDir() + '/' + name.toUtf8();
    // One that is there stays as it is.
    NativeFile::writeNew(path, m_texts.text(QStringLiteral("demo_file_content")).toUtf8());
    return FilePath::toUrl(FilePath::standardized(path)); // As its entry will be spelled.
}

/// Of the path of a new file of this kind, up to its random part.
QByteArray ShelfStore::fileStart(const QString &key) const
{
    const auto seconds = static_cast<qint64>(m_queue.now() + unixAtReference);
    return droppedDir() + '/' + m_texts.text(key).toUtf8() + '-' + QByteArray::number(seconds)
        + '-';
}

void ShelfStore::insertDropped(const QByteArray &path, const std::optional<QString> &preview,
                               const std::optional<WebAddress> &link)
{
    const QUrl url = FilePath::toUrl(path);
    auto next = items.value();
    if (Addresses::keys(next).contains(Addresses::key(url)))
        return;
    ShelfItem item = newItem(url);
    item.preview = preview;
    item.link = link;
    next.append(std::move(item));
    commit(std::move(next));
    m_sounds.play(Sound::Pop);
}

ShelfItem ShelfStore::newItem(const QUrl &url) const
{
    ShelfItem item;
    item.id = QUuid::createUuid();
    const Bookmarked made = m_bookmarks.make(url);
    item.url = made.url;
    item.bookmark = made.bookmark;
    item.addedAt = m_queue.now();
    return item;
}
