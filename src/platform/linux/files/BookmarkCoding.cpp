#include "platform/linux/files/BookmarkCoding.h"

#include "base/FilePath.h"

#include <QDataStream>
#include <QIODevice>

namespace {

constexpr quint8 version = 1;
constexpr qsizetype headerSize = 1 + 8 + 8 + 8 + 8 + 4 + 1;

}

QByteArray BookmarkCoding::encode(const BookmarkRecord &record)
{
    const FileIdentity &identity = record.identity;
    QByteArray bytes;
    bytes.reserve(headerSize + record.path.size());
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << version << quint64(identity.device) << quint64(identity.inode) << record.fileSystem
           << qint64(identity.birthSeconds) << identity.birthNanoseconds
           << quint8(identity.hasBirth ? 1 : 0);
    return bytes += record.path;
}

std::optional<BookmarkRecord> BookmarkCoding::decode(const QByteArray &bytes)
{
    if (bytes.size() <= headerSize || bytes[0] != version)
        return std::nullopt;
    quint64 device = 0;
    quint64 inode = 0;
    qint64 birthSeconds = 0;
    quint8 hasBirth = 0;
    BookmarkRecord record;
    QDataStream stream(bytes.mid(1, headerSize - 1));
    stream >> device >> inode >> record.fileSystem >> birthSeconds
        >> record.identity.birthNanoseconds >> hasBirth;
    record.identity.device = device;
    record.identity.inode = inode;
    record.identity.birthSeconds = birthSeconds;
    record.identity.hasBirth = hasBirth == 1;
    if (hasBirth > 1 || record.identity.birthNanoseconds >= 1'000'000'000)
        return std::nullopt;
    record.path = bytes.mid(headerSize);
    if (!record.path.startsWith('/') || record.path.contains('\0')
        || FilePath::standardized(record.path) != record.path)
        return std::nullopt;
    return record;
}
