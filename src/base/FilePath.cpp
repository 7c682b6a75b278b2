#include "base/FilePath.h"

#include <QByteArrayList>
#include <QMimeDatabase>
#include <QSysInfo>

#include <cerrno>

#include <sys/stat.h>

namespace {

/// What a path may hold unescaped besides letters, digits and "-._~": the choice
/// that most programs make, so that our addresses look like theirs.
constexpr char unescaped[] = "/!$&'()*+,:=@";

QByteArray withoutEndSlashes(QByteArray path)
{
    qsizetype size = path.size();
    while (size > 1 && path[size - 1] == '/')
        --size;
    path.truncate(size);
    return path;
}

bool isOurHost(const QString &host)
{
    static const QString machine = QSysInfo::machineHostName();
    return host.isEmpty() || host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0
        || host.compare(machine, Qt::CaseInsensitive) == 0;
}

}

QUrl FilePath::toUrl(const QByteArray &path, Kind kind)
{
    if (!path.startsWith('/') || path.contains('\0'))
        return {};
    QByteArray encoded = "file://" + withoutEndSlashes(path).toPercentEncoding(unescaped);
    if (kind == Kind::Directory && !encoded.endsWith('/'))
        encoded += '/';
    return QUrl::fromEncoded(encoded, QUrl::StrictMode);
}

QByteArray FilePath::fromUrl(const QUrl &url)
{
    if (url.scheme() != QLatin1String("file") || !isOurHost(url.host()))
        return {};
    const auto path = QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (!path.startsWith('/') || path.contains('\0'))
        return {};
    return withoutEndSlashes(path);
}

QUrl FilePath::canonical(const QUrl &url)
{
    const QByteArray path = fromUrl(url);
    if (path.isEmpty())
        return {};
    const bool directory = url.path(QUrl::FullyEncoded).endsWith(QLatin1Char('/'));
    return toUrl(standardized(path), directory ? Kind::Directory : Kind::File);
}

QByteArray FilePath::standardized(const QByteArray &path)
{
    const bool absolute = path.startsWith('/');
    if (absolute && !path.contains("//") && !path.contains("/.") && !path.endsWith('/'))
        return path; // The usual case, for thousands of entries at a time.
    QByteArrayList parts;
    for (const QByteArray &part : path.split('/')) {
        if (part.isEmpty() || part == ".")
            continue;
        const bool up = part == "..";
        if (up && !parts.isEmpty() && parts.last() != "..")
            parts.removeLast();
        else if (!up || !absolute)
            parts.append(part);
    }
    const QByteArray joined = parts.join('/');
    return absolute ? '/' + joined : joined;
}

QByteArray FilePath::parent(const QByteArray &path)
{
    const QByteArray trimmed = withoutEndSlashes(path);
    const qsizetype slash = trimmed.lastIndexOf('/');
    return slash < 0 ? QByteArray() : withoutEndSlashes(trimmed.left(slash + 1));
}

QByteArray FilePath::lastComponent(const QByteArray &path)
{
    const QByteArray trimmed = withoutEndSlashes(path);
    return trimmed == "/" ? trimmed : trimmed.mid(trimmed.lastIndexOf('/') + 1);
}

bool FilePath::isBelow(const QByteArray &path, const QByteArray &folder)
{
    QByteArray prefix = standardized(folder);
    if (!prefix.endsWith('/'))
        prefix += '/';
    const QByteArray inner = standardized(path);
    return inner.size() > prefix.size() && inner.startsWith(prefix);
}

QString FilePath::display(const QByteArray &path)
{
    return QString::fromUtf8(path);
}

QMimeType FilePath::typeByName(const QByteArray &path)
{
    return QMimeDatabase().mimeTypeForFile(display(lastComponent(path)),
                                           QMimeDatabase::MatchExtension);
}

bool FilePath::exists(const QByteArray &path)
{
    struct stat information = {};
    if (path.isEmpty() || path.contains('\0'))
        return false;
    if (lstat(path.constData(), &information) == 0)
        return true;
    return errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG;
}
