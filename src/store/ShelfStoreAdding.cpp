#include "store/ShelfStore.h"

#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "platform/Bookmarks.h"
#include "store/Addresses.h"
#include "store/Characters.h"
#include "store/DroppedImage.h"
#include "store/WebLocation.h"

#include <algorithm>

namespace {

/// Seconds of the Unix epoch at the start of 2001, from which stored dates count.
constexpr double unixAtReference = 978307200;
constexpr qsizetype longestPreview = 60;
constexpr qsizetype longestLinkTitle = 80;

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

/// The address that this text is, if it is nothing else.
std::optional<QUrl> webAddress(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (!trimmed.startsWith(QLatin1String("http"), Qt::CaseInsensitive)
        || std::any_of(trimmed.begin(), trimmed.end(), [](QChar c) { return c.isSpace(); }))
        return std::nullopt;
    const QUrl url(trimmed);
    const QString scheme = url.scheme(); // In lower case, however it was written.
    const bool web = scheme == QLatin1String("http") || scheme == QLatin1String("https");
    return web && url.isValid() && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
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
    if (const auto url = webAddress(text)) {
        addLink(*url);
        return;
    }
    const QByteArray path
        = newFilePath(m_texts.text(QStringLiteral("dropped_text")), QStringLiteral("txt"));
    if (NativeFile::writeNew(path, text.toUtf8()))
        insertDropped(path, previewOf(text));
}

void ShelfStore::addLink(const QUrl &url)
{
    const auto &list = items.value();
    if (std::any_of(list.begin(), list.end(),
                    [&](const ShelfItem &item) { return item.link == url; }))
        return;
    const QByteArray path
        = newFilePath(m_texts.text(QStringLiteral("dropped_link")), QStringLiteral("webloc"));
    if (NativeFile::writeNew(path, WebLocation::encode(url)))
        insertDropped(path, linkTitle(url), url);
}

QString ShelfStore::linkTitle(const QUrl &url)
{
    QString title = url.host();
    if (title.isEmpty())
        title = QString::fromLatin1(url.toEncoded());
    if (title.startsWith(QLatin1String("www.")))
        title.remove(0, 4);
    QString path = url.path(QUrl::FullyDecoded);
    while (path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return Characters::first(title + path, longestLinkTitle);
}

void ShelfStore::addImage(const QImage &image)
{
    addFromWorker(QStringLiteral("png"), [image] { return DroppedImage::pngFromImage(image); });
}

void ShelfStore::addImageData(const QByteArray &data, const QMimeType &type)
{
    const auto png = QStringLiteral("png");
    if (type.inherits(QStringLiteral("image/tiff"))) {
        addFromWorker(png, [data] { return DroppedImage::pngFromImageData(data); });
        return;
    }
    const QString suffix = type.preferredSuffix();
    addFromWorker(suffix.isEmpty() ? png : suffix, [data] { return std::optional(data); });
}

/// The entry lands on whichever shelf is current when the file is there.
void ShelfStore::addFromWorker(const QString &extension, Bytes bytes)
{
    const QByteArray path = newFilePath(m_texts.text(QStringLiteral("dropped_image")), extension);
    m_workers.run(
        WorkerPriority::UserInitiated,
        [this, &queue = m_queue, alive = std::weak_ptr(m_alive), path, bytes = std::move(bytes)] {
            const auto content = bytes();
            if (!content || !NativeFile::writeNew(path, *content))
                return;
            queue.post([this, alive, path] {
                if (alive.lock())
                    insertDropped(path);
            });
        });
}

QUrl ShelfStore::makeDemoFile()
{
    const QString name = m_texts.text(QStringLiteral("demo_file_name")) + QStringLiteral(".txt");
    const QByteArray path = droppedDir() + '/' + name.toUtf8();
    if (!FilePath::exists(path))
        NativeFile::writeNew(path, m_texts.text(QStringLiteral("demo_file_content")).toUtf8());
    return FilePath::toUrl(path);
}

/// Two files of one kind and second differ by the random part. A name that is
/// taken would replace the file of another entry.
QByteArray ShelfStore::newFilePath(const QString &base, const QString &extension) const
{
    const auto seconds = static_cast<qint64>(m_queue.now() + unixAtReference);
    const QByteArray start
        = droppedDir() + '/' + base.toUtf8() + '-' + QByteArray::number(seconds) + '-';
    QByteArray path;
    do {
        const QByteArray random = QUuid::createUuid().toByteArray(QUuid::WithoutBraces).left(4);
        path = start + random.toUpper() + '.' + extension.toUtf8();
    } while (FilePath::exists(path));
    return path;
}

void ShelfStore::insertDropped(const QByteArray &path, const std::optional<QString> &preview,
                               const std::optional<QUrl> &link)
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
