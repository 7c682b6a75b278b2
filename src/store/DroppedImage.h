#pragma once

#include <QByteArray>
#include <QImage>
#include <QMimeType>
#include <QStringList>

#include <functional>
#include <optional>

class PictureDecoder;
class Workers;

/// Image data as drops and the clipboard carry it.
namespace DroppedImage {

/// Any thread. The first of the offered types that is an image with a file name extension;
/// TIFF, which few programs open, only where there is nothing else. Types that
/// the type database does not know are passed over.
std::optional<QMimeType> bestType(const QStringList &identifiers);

/// Main thread. Decoded where that does no harm, and encoded on a worker: both outlive it. The
/// answer comes on any thread: none for what is not a picture, is damaged, or is too large to
/// unpack safely.
using Bytes = std::function<void(const std::optional<QByteArray> &)>;
void pngFromImageData(const QByteArray &data, PictureDecoder &decoder, Workers &workers,
                      Bytes answer);
/// Any thread, and better a worker.
std::optional<QByteArray> pngFromImage(const QImage &image);

}
