#include "decoder/Decoded.h"

#include <poppler-qt6.h>

#include <algorithm>

#include <sys/mman.h>
#include <sys/stat.h>

namespace {

constexpr double pointsAnInch = 72;

/// A file as bytes, without reading what is not looked at.
class Mapped
{
public:
    explicit Mapped(int file)
    {
        struct stat status = {};
        if (::fstat(file, &status) != 0 || status.st_size <= 0)
            return;
        void *const mapped
            = ::mmap(nullptr, static_cast<size_t>(status.st_size), PROT_READ, MAP_PRIVATE, file, 0);
        if (mapped == MAP_FAILED)
            return;
        m_data = mapped;
        m_size = static_cast<size_t>(status.st_size);
    }
    ~Mapped()
    {
        if (m_data != nullptr)
            ::munmap(m_data, m_size);
    }
    Mapped(const Mapped &) = delete;
    Mapped &operator=(const Mapped &) = delete;

    QByteArray bytes() const
    {
        return QByteArray::fromRawData(static_cast<const char *>(m_data),
                                       static_cast<qsizetype>(m_size));
    }

private:
    void *m_data = nullptr;
    size_t m_size = 0;
};

}

Decoded Decode::page(int file, int page, int maxPixel, SharedMemory &memory)
{
    Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
    const Mapped mapped(file);
    const auto document = Poppler::Document::loadFromData(mapped.bytes());
    if (!document || document->isLocked() || page < 0 || page >= document->numPages())
        return std::nullopt;
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    const auto sheet = document->page(page);
    if (!sheet)
        return std::nullopt;
    const QSizeF points = sheet->pageSizeF();
    const double longer = std::max(points.width(), points.height());
    if (points.isEmpty() || !(longer > 0))
        return std::nullopt;
    const double resolution = maxPixel * pointsAnInch / longer;
    return fromImage(sheet->renderToImage(resolution, resolution), points.toSize(),
                     document->numPages(), memory);
}
