#include "decoder/Decoded.h"

#include <cstring>
#include <utility>

#include <sys/mman.h>

SharedMemory::~SharedMemory()
{
    end();
}

void SharedMemory::end()
{
    if (uchar *const data = std::exchange(m_data, nullptr); data != nullptr)
        ::munmap(data, static_cast<size_t>(m_bytes));
}

uchar *SharedMemory::begin(qint64 bytes)
{
    end();
    if (bytes <= 0 || bytes > m_most)
        return nullptr;
    void *const mapped = ::mmap(nullptr, static_cast<size_t>(bytes), PROT_READ | PROT_WRITE,
                                MAP_SHARED, m_descriptor, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    m_bytes = bytes;
    m_data = static_cast<uchar *>(mapped);
    return m_data;
}

Decoded fromImage(const QImage &image, const QSize &whole, int count, SharedMemory &memory,
                  QImage::Format format)
{
    const QImage painted = image.convertToFormat(format);
    DecoderProtocol::Result result;
    result.width = painted.width();
    result.height = painted.height();
    result.wholeWidth = whole.width();
    result.wholeHeight = whole.height();
    result.count = count;
    result.bytes = painted.sizeInBytes();
    uchar *const to = memory.begin(result.bytes);
    if (to == nullptr)
        return std::nullopt;
    std::memcpy(to, painted.constBits(), static_cast<size_t>(result.bytes));
    return result;
}
