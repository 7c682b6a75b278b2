#pragma once

#include <QImage>
#include <QMimeType>
#include <QStringList>

#include <optional>

/// Image data as drops and the clipboard carry it. Any thread.
namespace DroppedImage {

/// The first of the offered types that is an image with a file name extension;
/// TIFF, which few programs open, only where there is nothing else. Types that
/// the type database does not know are passed over.
std::optional<QMimeType> bestType(const QStringList &identifiers);

/// None for what is not a picture, is damaged, or is too large to unpack safely.
std::optional<QByteArray> pngFromImageData(const QByteArray &data);
std::optional<QByteArray> pngFromImage(const QImage &image);

}
