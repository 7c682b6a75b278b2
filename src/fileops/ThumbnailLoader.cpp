#include "fileops/ThumbnailLoader.h"

#include "platform/PictureDecoder.h"

#include <QMimeDatabase>

#include <utility>

namespace {

constexpr qsizetype cacheBytes = 32 << 20; // Some 2,000 rows at two pixels a point.
constexpr qsizetype entryOverhead = 256;

/// By the name alone: nothing here looks into files.
bool isImage(const QUrl &url)
{
    static const QMimeDatabase types;
    const QString name = url.fileName(QUrl::PrettyDecoded);
    return types.mimeTypeForFile(name, QMimeDatabase::MatchExtension)
        .name()
        .startsWith(QLatin1String("image/"));
}

}

Thumbnails::Thumbnails(PictureDecoder &decoder, ThumbnailGenerator &generator)
    : m_decoder(decoder)
    , m_generator(generator)
    , m_cache(cacheBytes)
{
}

QImage Thumbnails::cached(const QUrl &url, int maxPixel) const
{
    const Entry *const entry = find(url, maxPixel);
    return entry ? entry->image : QImage();
}

const Thumbnails::Entry *Thumbnails::find(const QUrl &url, int maxPixel) const
{
    return m_cache.object({ url, maxPixel });
}

void Thumbnails::keep(const QUrl &url, int maxPixel, const QImage &image, const QByteArray &version)
{
    m_cache.insert({ url, maxPixel }, new Entry { image, version },
                   image.sizeInBytes() + entryOverhead);
}

ThumbnailLoader::ThumbnailLoader(Thumbnails &shared, const QUrl &url, int maxPixel)
    : image(shared.cached(url, maxPixel))
    , m_shared(shared)
{
}

void ThumbnailLoader::load(const QUrl &url, double size, double scale)
{
    if (url == m_url && size == m_size && scale == m_scale)
        return;
    m_url = url;
    m_size = size;
    m_scale = scale;
    m_maxPixel = static_cast<int>(size * scale);
    m_shownQuality.reset();
    m_work.reset();
    const auto *const known = m_shared.find(url, m_maxPixel);
    const QImage first = known ? known->image : QImage();
    if (image.value().cacheKey() != first.cacheKey())
        image.set(first);
    if (known)
        compareVersions(known->version);
    else
        decode();
}

/// A file that is written anew in its place keeps its address.
void ThumbnailLoader::compareVersions(const QByteArray &known)
{
    m_work = m_shared.m_decoder.version(m_url, [this, known](const std::optional<QByteArray> &now) {
        m_work.reset();
        if (now != known)
            decode();
    });
}

void ThumbnailLoader::decode()
{
    if (!isImage(m_url))
        return askDesktop();
    m_work
        = m_shared.m_decoder.image(m_url, m_maxPixel, PictureDecoder::Urgency::Row,
                                   [this](const std::optional<PictureDecoder::Picture> &picture) {
                                       m_version = picture ? picture->version : QByteArray();
                                       if (picture)
                                           return show(Representation::Thumbnail, picture->image);
                                       askDesktop();
                                   });
}

void ThumbnailLoader::askDesktop()
{
    if (!image.value().isNull())
        image.set(QImage()); // Of what the file was before.
    m_work = m_shared.m_generator.generate(
        m_url, m_size, m_scale,
        [this](Representation quality, const QImage &picture, const QByteArray &version) {
            m_version = version;
            show(quality, picture);
        });
}

void ThumbnailLoader::show(Representation quality, const QImage &picture)
{
    if (m_shownQuality >= quality)
        return; // Late, and no better.
    m_shownQuality = quality;
    if (quality == Representation::Thumbnail)
        m_shared.keep(m_url, m_maxPixel, picture, m_version);
    image.set(picture);
}
