#include "platform/linux/pictures/ThumbnailFiles.h"

#include "base/AtomicFile.h"
#include "base/NativeFile.h"
#include "platform/linux/pictures/DecoderPool.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QtEndian>

#include <glib.h>

#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::pair<const char *, int> sizeClasses[]
    = { { "normal", 128 }, { "large", 256 }, { "x-large", 512 }, { "xx-large", 1024 } };
constexpr const char *failures = "fail/vantle-" VANTLE_VERSION;
constexpr qsizetype mostHeader = 65536; // Bytes in which the tags of a thumbnail stand.

QByteArray readStart(const QByteArray &path)
{
    const Descriptor file = NativeFile::open(path);
    QByteArray bytes(mostHeader, Qt::Uninitialized);
    const ssize_t size = ::read(file.number(), bytes.data(), mostHeader);
    bytes.truncate(std::max<ssize_t>(size, 0));
    return bytes;
}

/// The text of a PNG file under that keyword.
QByteArray tag(const QByteArray &png, const QByteArray &keyword)
{
    constexpr qsizetype signature = 8;
    constexpr qsizetype around = 12; // Length, type and checksum of a chunk.
    qsizetype at = signature;
    while (at + around <= png.size()) {
        const auto size = qFromBigEndian<quint32>(png.constData() + at);
        const QByteArray type = png.mid(at + 4, 4);
        if (size > mostHeader || at + around + static_cast<qsizetype>(size) > png.size())
            return {};
        if (type == "tEXt") {
            const QByteArray text = png.mid(at + 8, size);
            if (text.startsWith(keyword + '\0'))
                return text.mid(keyword.size() + 1);
        }
        at += around + size;
    }
    return {};
}

bool isOf(const QByteArray &thumbnail, const ThumbnailSubject &subject)
{
    const QByteArray png = readStart(thumbnail);
    const QByteArray size = tag(png, "Thumb::Size");
    return tag(png, "Thumb::MTime") == QByteArray::number(subject.modified)
        && (size.isEmpty() || size == QByteArray::number(subject.size));
}

}

ThumbnailFiles::ThumbnailFiles(QByteArray folder)
    : m_folder(std::move(folder))
{
}

std::optional<ThumbnailSubject> ThumbnailFiles::subject(const QByteArray &path) const
{
    struct stat status = {};
    if (path.startsWith(m_folder + '/') || ::stat(path.constData(), &status) != 0
        || !S_ISREG(status.st_mode))
        return std::nullopt;
    g_autofree char *uri = g_filename_to_uri(path.constData(), nullptr, nullptr);
    if (!uri)
        return std::nullopt;
    return ThumbnailSubject { path, uri, DecoderPool::versionOf(status), status.st_mtim.tv_sec,
                              status.st_size };
}

QByteArray ThumbnailFiles::nameOf(const ThumbnailSubject &subject) const
{
    return '/' + QCryptographicHash::hash(subject.uri, QCryptographicHash::Md5).toHex() + ".png";
}

std::optional<ThumbnailFiles::Found> ThumbnailFiles::find(const ThumbnailSubject &subject,
                                                          int wanted) const
{
    std::optional<Found> smaller;
    for (const auto &[name, pixels] : sizeClasses) {
        const Found found { m_folder + '/' + name + nameOf(subject), pixels };
        if (!isOf(found.path, subject))
            continue;
        if (pixels >= wanted)
            return found;
        smaller = found;
    }
    return smaller;
}

bool ThumbnailFiles::hasFailed(const ThumbnailSubject &subject) const
{
    return isOf(m_folder + '/' + failures + nameOf(subject), subject);
}

void ThumbnailFiles::write(const ThumbnailSubject &subject, const QImage &image) const
{
    save("large", subject, image);
}

void ThumbnailFiles::writeFailure(const ThumbnailSubject &subject) const
{
    QImage none(1, 1, QImage::Format_ARGB32);
    none.fill(Qt::transparent);
    save(failures, subject, none);
}

void ThumbnailFiles::save(const QByteArray &folder, const ThumbnailSubject &subject,
                          QImage image) const
{
    image.setText(QStringLiteral("Thumb::URI"), QString::fromLatin1(subject.uri));
    image.setText(QStringLiteral("Thumb::MTime"), QString::number(subject.modified));
    image.setText(QStringLiteral("Thumb::Size"), QString::number(subject.size));
    image.setText(QStringLiteral("Software"), QStringLiteral("Vantle"));
    QBuffer bytes;
    const QByteArray place = m_folder + '/' + folder;
    if (bytes.open(QIODevice::WriteOnly) && image.save(&bytes, "PNG")
        && NativeFile::makeFolder(place))
        AtomicFile::write(place + nameOf(subject), bytes.data());
}
