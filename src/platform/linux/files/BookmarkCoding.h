#pragma once

#include "platform/linux/files/FileIdentity.h"

#include <QByteArray>

#include <optional>

/// What a bookmark remembers of a file.
struct BookmarkRecord
{
    FileIdentity identity;
    quint64 fileSystem = 0; // As statfs tells it; it outlives the device's number. 0: unknown.
    QByteArray path;

    bool operator==(const BookmarkRecord &) const = default;
};

/// A bookmark's bytes: the version 1, then, all big-endian, device, inode and file
/// system (8 bytes each), birth (seconds in 8, nanoseconds in 4), 1 or 0 for
/// whether there is a birth, and the path.
namespace BookmarkCoding {

QByteArray encode(const BookmarkRecord &record);

/// None for bytes that encode did not make.
std::optional<BookmarkRecord> decode(const QByteArray &bytes);

}
