#pragma once

#include "base/Ticket.h"

#include <QByteArray>
#include <QImage>
#include <QUrl>

#include <functional>

/// What the desktop has, or can make, as a picture of any file: from its shared
/// thumbnail cache, from pages of documents, from the thumbnailers that
/// applications install. Main thread; a file's content is looked at elsewhere.
class ThumbnailGenerator
{
public:
    /// From worse to better.
    enum class Representation { Icon = 0, LowQuality = 1, Thumbnail = 2 };

    virtual ~ThumbnailGenerator() = default;
    /// `update` is called later, on the main thread, once for each representation
    /// that there is, in no certain order; never where there is none. `size` is the
    /// edge length in points; `version` as PictureDecoder::version() has it.
    /// Dropping the ticket cancels.
    using Update
        = std::function<void(Representation, const QImage &image, const QByteArray &version)>;
    virtual Ticket generate(const QUrl &url, double size, double scale, Update update) = 0;
};
