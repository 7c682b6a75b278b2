#include "decoder/Decoded.h"

#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

SharedMemory::SharedMemory(qint64 bytes)
    : m_bytes(bytes)
    , m_descriptor(::memfd_create("picture", MFD_CLOEXEC | MFD_ALLOW_SEALING))
{
    if (bytes <= 0 || m_descriptor < 0 || ::ftruncate(m_descriptor, bytes) != 0)
        return;
    void *const mapped = ::mmap(nullptr, static_cast<size_t>(bytes), PROT_READ | PROT_WRITE,
                                MAP_SHARED, m_descriptor, 0);
    if (mapped != MAP_FAILED)
        m_data = static_cast<uchar *>(mapped);
}

SharedMemory::SharedMemory(SharedMemory &&other) noexcept
    : m_bytes(other.m_bytes)
    , m_descriptor(std::exchange(other.m_descriptor, -1))
    , m_data(std::exchange(other.m_data, nullptr))
{
}

SharedMemory::~SharedMemory()
{
    if (m_data != nullptr)
        ::munmap(m_data, static_cast<size_t>(m_bytes));
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void SharedMemory::seal() const
{
    ::fcntl(m_descriptor, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL);
}

std::optional<Decoded> fromImage(const QImage &image, const QSize &whole, int count)
{
    const QImage painted = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    DecoderProtocol::Result result;
    result.decoded = true;
    result.width = painted.width();
    result.height = painted.height();
    result.wholeWidth = whole.width();
    result.wholeHeight = whole.height();
    result.count = count;
    result.bytes = painted.sizeInBytes();
    SharedMemory memory(result.bytes);
    if (memory.data() == nullptr)
        return std::nullopt;
    std::memcpy(memory.data(), painted.constBits(), static_cast<size_t>(result.bytes));
    return Decoded { result, std::move(memory) };
}
