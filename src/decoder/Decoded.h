#pragma once

#include "platform/linux/DecoderProtocol.h"

#include <QImage>
#include <QSize>

#include <optional>

/// Memory that is handed to the program: pixels or a listing.
class SharedMemory
{
public:
    explicit SharedMemory(qint64 bytes);
    SharedMemory(SharedMemory &&other) noexcept;
    SharedMemory &operator=(SharedMemory &&other) noexcept = delete;
    ~SharedMemory();

    /// Null where there was no memory.
    uchar *data() const { return m_data; }
    int descriptor() const { return m_descriptor; }
    /// From now on neither side can change its size.
    void seal() const;

private:
    qint64 m_bytes = 0;
    int m_descriptor = -1;
    uchar *m_data = nullptr;
};

struct Decoded
{
    DecoderProtocol::Result result;
    SharedMemory memory;
};

/// Null images make none.
std::optional<Decoded> fromImage(const QImage &image, const QSize &whole, int count);

/// Each reads an open file that it does not close. None where it is not of that
/// kind, damaged beyond what can be shown, or too large.
namespace Decode {

void begin(); // Once, before the process is confined.
std::optional<Decoded> image(int file, int maxPixel);
/// In the older formats.
std::optional<Decoded> otherImage(int file, int maxPixel);
std::optional<Decoded> frames(int file, int first, int maxPixel);
std::optional<Decoded> page(int file, int page, int maxPixel);
std::optional<Decoded> archive(int file);

}
