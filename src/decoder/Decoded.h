#pragma once

#include "decoder/DecoderProtocol.h"

#include <QImage>
#include <QSize>

#include <optional>

/// The program's memory, for pixels or a listing.
class SharedMemory
{
public:
    /// The descriptor stays the caller's. bytes: of it there are no more.
    SharedMemory(int descriptor, qint64 bytes)
        : m_descriptor(descriptor)
        , m_most(bytes)
    {
    }
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;
    ~SharedMemory();

    /// That much of it, from its beginning; null where it is too small. What
    /// was given before is no longer there.
    uchar *begin(qint64 bytes);

private:
    void end();

    const int m_descriptor;
    const qint64 m_most;
    qint64 m_bytes = 0;
    uchar *m_data = nullptr;
};

using Decoded = std::optional<DecoderProtocol::Result>;

/// Null images make none.
Decoded fromImage(const QImage &image, const QSize &whole, int count, SharedMemory &memory,
                  QImage::Format format = QImage::Format_ARGB32_Premultiplied);

/// Each reads an open file that it does not close. None where it is not of that
/// kind, damaged beyond what can be shown, or too large.
namespace Decode {

void begin(); // Once, before the process is confined.
Decoded image(int file, const DecoderProtocol::Job &job, SharedMemory &memory);
/// In the older formats.
Decoded otherImage(int file, const DecoderProtocol::Job &job, SharedMemory &memory);
Decoded frames(int file, const DecoderProtocol::Job &job, SharedMemory &memory);
Decoded page(int file, int page, int maxPixel, SharedMemory &memory);
Decoded archive(int file, SharedMemory &memory);

}
