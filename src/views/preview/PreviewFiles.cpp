#include "views/preview/PreviewFiles.h"

#include "app/settings/Region.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "store/WebLocation.h"

#include <QCollator>
#include <QMimeDatabase>
#include <QStringDecoder>

#include <algorithm>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qsizetype mostText = 1 << 20; // Bytes.
constexpr qsizetype mostEntries = 5000;
constexpr qsizetype longestLine = 4000; // Characters: laying out longer ones takes seconds.
constexpr qsizetype mostLines = 50'000; // Each costs memory and time of its own.

QMimeType typeOf(const QUrl &url)
{
    static const QMimeDatabase types;
    if (url.path(QUrl::FullyEncoded).endsWith(u'/'))
        return types.mimeTypeForName(QStringLiteral("inode/directory"));
    return types.mimeTypeForFile(FilePath::display(FilePath::lastComponent(FilePath::fromUrl(url))),
                                 QMimeDatabase::MatchExtension);
}

bool isArchive(const QMimeType &type)
{
    static const char *const archives[] = { "application/zip",
                                            "application/x-tar",
                                            "application/x-compressed-tar",
                                            "application/x-7z-compressed",
                                            "application/vnd.rar",
                                            "application/x-rar",
                                            "application/x-bzip-compressed-tar",
                                            "application/x-xz-compressed-tar",
                                            "application/x-zstd-compressed-tar",
                                            "application/x-cpio",
                                            "application/x-cd-image",
                                            "application/vnd.debian.binary-package",
                                            "application/x-rpm",
                                            "application/vnd.ms-cab-compressed",
                                            "application/x-xar",
                                            "application/x-lha",
                                            "application/x-lzma-compressed-tar",
                                            "application/x-archive",
                                            "application/java-archive" };
    return std::any_of(std::begin(archives), std::end(archives),
                       [&](const char *name) { return type.name() == QLatin1String(name); });
}

class File
{
public:
    explicit File(const QByteArray &path)
        : m_descriptor(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC))
    {
    }
    ~File()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    bool isPlain() const
    {
        struct stat status = {};
        return m_descriptor >= 0 && ::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
    }
    QByteArray start(qsizetype most) const
    {
        QByteArray bytes(most, Qt::Uninitialized);
        qsizetype size = 0;
        for (ssize_t some = 1; some > 0 && size < most; size += some)
            some = std::max<ssize_t>(
                0, ::read(m_descriptor, bytes.data() + size, static_cast<size_t>(most - size)));
        bytes.truncate(size);
        return bytes;
    }

private:
    int m_descriptor;
};

/// By the mark at its start, else UTF-8, else the bytes as they are.
QString decoded(const QByteArray &bytes, bool whole)
{
    if (const auto encoding = QStringConverter::encodingForData(bytes))
        return QStringDecoder(*encoding)(bytes);
    // A character that the end cuts through is no fault.
    QByteArray complete = bytes;
    for (int cut = 0; cut < 4 && !whole && !complete.isEmpty(); ++cut) {
        const bool inside = (complete.back() & 0xc0) == 0x80;
        const bool begins = (complete.back() & 0xc0) == 0xc0;
        if (inside || begins)
            complete.chop(1);
        if (!inside)
            break;
    }
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8(complete);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

/// With lines that can be laid out, and no more of them than can be shown.
PreviewFiles::Text bounded(const QString &text, bool whole)
{
    QString result;
    result.reserve(text.size());
    qsizetype column = 0;
    qsizetype lines = 1;
    for (const QChar c : text) {
        const bool isEnd = c == u'\n' || c == QChar::ParagraphSeparator;
        lines += isEnd ? 1 : 0;
        if (lines > mostLines)
            return { result, false };
        column = isEnd ? 0 : column + 1;
        if (column > longestLine && !c.isLowSurrogate()) {
            result += u'\n';
            column = 1;
        }
        result += c.isNull() ? QChar(QChar::ReplacementCharacter) : c;
    }
    return { result, whole };
}

struct CloseFolder
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};

QDateTime timeOf(const struct stat &status)
{
    return QDateTime::fromSecsSinceEpoch(status.st_mtim.tv_sec);
}

}

PreviewFiles::Kind PreviewFiles::kindOf(const QUrl &url)
{
    const QMimeType type = typeOf(url);
    const QString name = type.name();
    if (name == QLatin1String("inode/directory"))
        return Kind::Folder;
    if (url.path(QUrl::FullyEncoded).endsWith(QLatin1String(".webloc"), Qt::CaseInsensitive))
        return Kind::WebLocation;
    if (name.startsWith(QLatin1String("image/")))
        return Kind::Image;
    if (type.inherits(QStringLiteral("application/pdf")))
        return Kind::Document;
    if (isArchive(type))
        return Kind::Archive;
    // Without an extension that somebody knows, its first bytes tell.
    if (type.inherits(QStringLiteral("text/plain")) || type.isDefault())
        return Kind::Text;
    if (name.startsWith(QLatin1String("audio/")) || name.startsWith(QLatin1String("video/"))
        || name == QLatin1String("application/ogg") || name == QLatin1String("application/mxf"))
        return Kind::Media;
    return Kind::Other;
}

QString PreviewFiles::typeName(const QUrl &url)
{
    const QMimeType type = typeOf(url);
    return type.isDefault() ? QString() : type.comment();
}

QString PreviewFiles::sizeText(qint64 bytes, const QLocale &locale)
{
    return Region::withRegionsPoint(locale.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat),
                                    locale);
}

bool PreviewFiles::isCode(const QUrl &url)
{
    const QMimeType type = typeOf(url);
    const QString name = type.name();
    return name != QLatin1String("text/plain") && name != QLatin1String("text/markdown")
        && !type.isDefault();
}

std::optional<PreviewFiles::Text> PreviewFiles::readText(const QByteArray &path)
{
    const File file(path);
    if (!file.isPlain())
        return std::nullopt;
    const QByteArray bytes = file.start(mostText + 1);
    const bool whole = bytes.size() <= mostText;
    const bool isMarked = QStringConverter::encodingForData(bytes).has_value();
    if (!isMarked && bytes.left(8192).contains('\0'))
        return std::nullopt;
    return bounded(decoded(bytes.left(mostText), whole), whole);
}

std::optional<PreviewFiles::Listing> PreviewFiles::list(const QByteArray &path)
{
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.constData()));
    if (!folder)
        return std::nullopt;
    Listing listing;
    while (const dirent *const entry = ::readdir(folder.get())) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        if (listing.entries.size() >= mostEntries) {
            listing.whole = false;
            break;
        }
        struct stat status = {};
        const bool known = ::fstatat(::dirfd(folder.get()), entry->d_name, &status,
                                     AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT)
            == 0;
        listing.entries.append({ FilePath::display(name), known ? status.st_size : 0,
                                 known ? timeOf(status) : QDateTime(),
                                 known && S_ISDIR(status.st_mode) });
    }
    QCollator collator;
    collator.setNumericMode(true);
    std::ranges::sort(listing.entries, [&](const Entry &a, const Entry &b) {
        return a.folder != b.folder ? a.folder : collator.compare(a.name, b.name) < 0;
    });
    return listing;
}

std::optional<PreviewFiles::Status> PreviewFiles::status(const QByteArray &path)
{
    struct stat status = {};
    if (::stat(path.constData(), &status) != 0)
        return std::nullopt;
    return Status { status.st_size, timeOf(status), S_ISDIR(status.st_mode) };
}

std::optional<QUrl> PreviewFiles::readAddress(const QByteArray &path)
{
    const File file(path);
    return file.isPlain() ? WebLocation::decode(file.start(65536)) : std::nullopt;
}
