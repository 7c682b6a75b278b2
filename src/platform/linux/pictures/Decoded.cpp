#include "platform/linux/pictures/Decoded.h"

#include <memory>

#include <sys/mman.h>

namespace {

constexpr qint64 keptMapped = 256 << 10; // What is smaller is copied out of its pages.

using Mapping = std::shared_ptr<uchar>;

Mapping mapped(const Decoded &decoded)
{
    const auto bytes = static_cast<size_t>(decoded.result.bytes);
    if (!decoded.result.isDecoded() || bytes == 0)
        return nullptr;
    void *const at = ::mmap(nullptr, bytes, PROT_READ, MAP_SHARED, decoded.memory, 0);
    if (at == MAP_FAILED)
        return nullptr;
    return { static_cast<uchar *>(at), [bytes](uchar *pages) { ::munmap(pages, bytes); } };
}

/// One of the pictures that lie in the memory one after the other.
QImage imageAt(const Decoded &decoded, const Mapping &mapping, qint64 index)
{
    const auto &result = decoded.result;
    const qsizetype line = static_cast<qsizetype>(result.width) * 4;
    const qint64 bytes = line * result.height;
    const uchar *const first = mapping.get() + index * bytes;
    const QImage view(
        first, result.width, result.height, line, pixelFormat(decoded.job),
        [](void *kept) { delete static_cast<Mapping *>(kept); }, new Mapping(mapping));
    return bytes == result.bytes && bytes >= keptMapped ? view : view.copy();
}

}

std::optional<PictureDecoder::Picture> Decoded::picture() const
{
    const Mapping mapping = mapped(*this);
    if (!mapping)
        return std::nullopt;
    return PictureDecoder::Picture { imageAt(*this, mapping, 0),
                                     QSize(result.wholeWidth, result.wholeHeight), result.count,
                                     version };
}

std::optional<QList<PictureDecoder::Frame>> Decoded::frames() const
{
    const Mapping mapping = mapped(*this);
    const bool isPastEnd = result.isDecoded() && result.frames == 0;
    if (!mapping && !isPastEnd)
        return std::nullopt;
    QList<PictureDecoder::Frame> frames;
    for (qint32 i = 0; i < result.frames; ++i)
        frames.append({ imageAt(*this, mapping, i), result.milliseconds[static_cast<size_t>(i)] });
    return frames;
}

std::optional<PictureDecoder::Listing> Decoded::listing() const
{
    const Mapping mapping = mapped(*this);
    if (!mapping)
        return std::nullopt;
    // A copy nobody else can write.
    return DecoderProtocol::decodeListing(
        QByteArray(reinterpret_cast<const char *>(mapping.get()), result.bytes));
}
