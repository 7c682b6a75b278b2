#include "decoder/Decoded.h"

#include <QByteArrayList>
#include <QFile>
#include <QImage>
#include <QImageReader>

#include <algorithm>

#include <unistd.h>

namespace {

/// Which the other library does not read, or only by one that nobody should feed hostile files.
const QByteArrayList formats {
    "bmp", "cur", "icns", "ico", "pbm", "pgm", "ppm", "tga", "xbm", "xpm"
};

qint64 pixels(const QSize &size)
{
    return static_cast<qint64>(size.width()) * size.height();
}

/// An icon holds the same picture in several sizes.
void chooseLargest(QImageReader &reader)
{
    int largest = 0;
    qint64 most = 0;
    for (int i = 0; i < std::min(reader.imageCount(), 32) && reader.jumpToImage(i); ++i) {
        if (const qint64 here = pixels(reader.size()); here > most) {
            most = here;
            largest = i;
        }
    }
    if (most > 0)
        reader.jumpToImage(largest);
}

}

Decoded Decode::otherImage(int file, const DecoderProtocol::Job &job, SharedMemory &memory)
{
    ::lseek(file, 0, SEEK_SET);
    QFile device;
    if (!device.open(file, QIODevice::ReadOnly))
        return std::nullopt;
    QImageReader::setAllocationLimit(512); // Megabytes: the 128 refuse what cameras make today.
    QImageReader reader(&device, QImageReader::imageFormat(&device));
    if (!formats.contains(reader.format()))
        return std::nullopt;
    chooseLargest(reader);
    if (pixels(reader.size()) > DecoderProtocol::mostWholePixels) // All are held in memory.
        return std::nullopt;
    const QImage whole = reader.read();
    if (whole.isNull())
        return std::nullopt;
    const int edge = job.maxPixel;
    const bool fits = std::max(whole.width(), whole.height()) <= edge;
    return fromImage(fits ? whole
                          : whole.scaled(edge, edge, Qt::KeepAspectRatio, Qt::SmoothTransformation),
                     whole.size(), 1, memory, pixelFormat(job));
}
