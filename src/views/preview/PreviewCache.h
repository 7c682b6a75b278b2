#pragma once

#include "base/Ticket.h"
#include "platform/PictureDecoder.h"

#include <QCache>
#include <QUrl>

class MainQueue;

/// The pictures that the preview shows first, of the files that it is likely to
/// show next: small enough to be there at once, large enough to be looked at. Main
/// thread.
class PreviewCache
{
public:
    static constexpr int maxPixel = 512;

    PreviewCache(PictureDecoder &decoder, MainQueue &queue);

    /// Makes these ready, the first one first, after a moment in which nobody asks
    /// for others.
    void prepare(const QList<QUrl> &urls);
    /// Null where it is not there. An answer is given for the file as it was when
    /// it was decoded.
    const PictureDecoder::Picture *find(const QUrl &url) const;
    void keep(const QUrl &url, const PictureDecoder::Picture &picture);

private:
    void begin();
    void renew(const QUrl &url);

    PictureDecoder &m_decoder;
    MainQueue &m_queue;
    QList<QUrl> m_wanted;
    QCache<QUrl, PictureDecoder::Picture> m_pictures; // In bytes.
    Ticket m_pause;
    std::vector<Ticket> m_work;
};
