#include "platform/linux/files/BookmarkCoding.h"

#include "base/FilePath.h"

#include <QtEndian>

namespace {

constexpr char version = 1;
constexpr qsizetype headerSize = 1 + 8 + 8 + 8 + 8 + 4 + 1;

template<typename Number>
char *put(char *at, Number number)
{
    qToBigEndian(number, at);
    return at + sizeof number;
}

template<typename Number>
Number take(const char *&at)
{
    const auto number = qFromBigEndian<Number>(at);
    at += sizeof number;
    return number;
}

}

QByteArray BookmarkCoding::encode(const BookmarkRecord &record)
{
    QByteArray bytes(headerSize + record.path.size(), Qt::Uninitialized);
    char *at = bytes.data();
    *at++ = version;
    at = put<quint64>(at, record.identity.device);
    at = put<quint64>(at, record.identity.inode);
    at = put<quint64>(at, record.fileSystem);
    at = put<qint64>(at, record.identity.birthSeconds);
    at = put<quint32>(at, record.identity.birthNanoseconds);
    *at++ = record.identity.hasBirth ? 1 : 0;
    std::copy(record.path.begin(), record.path.end(), at);
    return bytes;
}

std::optional<BookmarkRecord> BookmarkCoding::decode(const QByteArray &bytes)
{
    if (bytes.size() <= headerSize || bytes[0] != version)
        return std::nullopt;
    BookmarkRecord record;
    const char *at = bytes.constData() + 1;
    record.identity.device = take<quint64>(at);
    record.identity.inode = take<quint64>(at);
    record.fileSystem = take<quint64>(at);
    record.identity.birthSeconds = take<qint64>(at);
    record.identity.birthNanoseconds = take<quint32>(at);
    const char birth = *at++;
    record.identity.hasBirth = birth == 1;
    if (birth < 0 || birth > 1 || record.identity.birthNanoseconds >= 1'000'000'000)
        return std::nullopt;
    record.path = bytes.mid(headerSize);
    if (!record.path.startsWith('/') || record.path.contains('\0')
        || FilePath::standardized(record.path) != record.path)
        return std::nullopt;
    return record;
}
