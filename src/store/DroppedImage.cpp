#include "store/DroppedImage.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>
#include <QMimeDatabase>

namespace {

/// A few hundred bytes can announce any size. Unpacked, this is 256 MB, or twice
/// that with 16 bits a channel.
constexpr qint64 mostPixels = 64LL * 1024 * 1024;

bool isTiff(const QMimeType &type)
{
    return type.inherits(QStringLiteral("image/tiff"));
}

}

std::optional<QMimeType> DroppedImage::bestType(const QStringList &identifiers)
{
    const QMimeDatabase database;
    std::optional<QMimeType> tiff;
    for (const QString &identifier : identifiers) {
        const QMimeType type = database.mimeTypeForName(identifier);
        if (!type.name().startsWith(QLatin1String("image/")) || type.preferredSuffix().isEmpty())
            continue;
        if (!isTiff(type))
            return type;
        if (!tiff)
            tiff = type;
    }
    return tiff;
}

std::optional<QByteArray> DroppedImage::pngFromImageData(const QByteArray &data)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    // A drawing is not a picture of pixels, and may name other files.
    if (reader.format().startsWith("svg"))
        return std::nullopt;
    const QSize size = reader.size();
    if (qint64(size.width()) * size.height() > mostPixels)
        return std::nullopt;
    return pngFromImage(reader.read());
}

std::optional<QByteArray> DroppedImage::pngFromImage(const QImage &image)
{
    if (image.isNull())
        return std::nullopt;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    return writer.write(image) ? std::optional(buffer.data()) : std::nullopt;
}
