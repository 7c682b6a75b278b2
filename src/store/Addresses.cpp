#include "store/Addresses.h"

#include "base/FilePath.h"

#include <sys/stat.h>

QByteArray Addresses::key(const QUrl &url)
{
    const QByteArray path = FilePath::fromUrl(url);
    return path.isEmpty() ? url.toEncoded() : FilePath::standardized(path);
}

QSet<QByteArray> Addresses::keys(const QList<ShelfItem> &items)
{
    QSet<QByteArray> result;
    result.reserve(items.size());
    for (const ShelfItem &item : items)
        result.insert(key(item.url));
    return result;
}

bool Addresses::insertNew(QSet<QByteArray> &known, const QUrl &url)
{
    const qsizetype before = known.size();
    known.insert(key(url));
    return known.size() > before;
}

QUrl Addresses::stored(const QUrl &url)
{
    const QByteArray path = FilePath::standardized(FilePath::fromUrl(url));
    struct stat information = {};
    if (path.isEmpty() || lstat(path.constData(), &information) != 0)
        return FilePath::canonical(url);
    return FilePath::toUrl(
        path, S_ISDIR(information.st_mode) ? FilePath::Kind::Directory : FilePath::Kind::File);
}
