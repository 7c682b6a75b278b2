#include "store/Addresses.h"

#include "base/FilePath.h"

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
