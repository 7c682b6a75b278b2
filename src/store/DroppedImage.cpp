#include "store/DroppedImage.h"

#include "base/Workers.h"
#include "platform/PictureDecoder.h"

#include <QBuffer>
#include <QImageWriter>
#include <QMimeDatabase>

#include <memory>
#include <utility>

namespace {

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

void DroppedImage::pngFromImageData(const QByteArray &data, PictureDecoder &decoder,
                                    Workers &workers, Bytes answer)
{
    // It is never cancelled: its answer holds the ticket.
    const auto ticket = std::make_shared<Ticket>();
    *ticket = decoder.imageFromData(
        data,
        [ticket, &workers,
         answer = std::move(answer)](const std::optional<PictureDecoder::Picture> &picture) {
            ticket->reset();
            if (!picture)
                return answer(std::nullopt);
            workers.run(WorkerPriority::UserInitiated,
                        [image = picture->image, answer] { answer(pngFromImage(image)); });
        });
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
