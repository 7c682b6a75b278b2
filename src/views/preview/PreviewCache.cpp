#include "views/preview/PreviewCache.h"

#include "base/MainQueue.h"
#include "views/preview/PreviewFiles.h"

namespace {

constexpr double preparePause = 0.1; // Seconds: a selection that moves on costs nothing.
constexpr qsizetype mostBytes = 24 << 20;

}

PreviewCache::PreviewCache(PictureDecoder &decoder, MainQueue &queue)
    : m_decoder(decoder)
    , m_queue(queue)
    , m_pictures(mostBytes)
{
}

void PreviewCache::prepare(const QList<QUrl> &urls)
{
    if (urls == m_wanted)
        return;
    m_wanted = urls;
    m_work.clear();
    m_pause = m_queue.after(preparePause, [this] { begin(); });
}

void PreviewCache::begin()
{
    for (const QUrl &url : std::as_const(m_wanted)) {
        if (PreviewFiles::kindOf(url) != PreviewFiles::Kind::Image)
            continue;
        const PictureDecoder::Picture *known = find(url);
        if (!known) {
            renew(url);
            continue;
        }
        m_work.push_back(m_decoder.version(
            url, [this, url, was = known->version](const std::optional<QByteArray> &now) {
                if (now != was)
                    renew(url);
            }));
    }
}

void PreviewCache::renew(const QUrl &url)
{
    m_work.push_back(
        m_decoder.image(url, maxPixel, PictureDecoder::Urgency::Preview,
                        [this, url](const std::optional<PictureDecoder::Picture> &picture) {
                            if (picture)
                                keep(url, *picture);
                            else
                                m_pictures.remove(url);
                        }));
}

const PictureDecoder::Picture *PreviewCache::find(const QUrl &url) const
{
    return m_pictures.object(url);
}

void PreviewCache::keep(const QUrl &url, const PictureDecoder::Picture &picture)
{
    m_pictures.insert(url, new PictureDecoder::Picture(picture), picture.image.sizeInBytes());
}
