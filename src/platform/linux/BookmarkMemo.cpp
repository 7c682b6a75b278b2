#include "platform/linux/BookmarkMemo.h"

#include "base/FilePath.h"

std::vector<KnownBookmark> &BookmarkMemo::understand(const QList<BookmarkQuery> &queries)
{
    if (m_folders.size() > 2 * queries.size() + 1024) { // Mostly of entries that are no more.
        m_known.clear();
        m_folders.clear();
        m_byFolder.clear();
    }
    m_known.resize(static_cast<size_t>(queries.size()));
    for (qsizetype i = 0; i < queries.size(); ++i) {
        KnownBookmark &known = m_known[static_cast<size_t>(i)];
        const BookmarkQuery &query = queries[i];
        if (known.name == nullptr || known.query.bookmark != query.bookmark
            || known.query.url != query.url)
            known = understood(query);
    }
    return m_known;
}

KnownBookmark BookmarkMemo::understood(const BookmarkQuery &query)
{
    KnownBookmark known;
    known.query = query;
    if (query.bookmark)
        known.record = BookmarkCoding::decode(*query.bookmark);
    known.path = FilePath::standardized(FilePath::fromUrl(query.url));
    known.pathIsUrls = !known.path.isEmpty();
    if (!known.pathIsUrls && known.record)
        known.path = known.record->path;
    const QByteArray folder = FilePath::parent(known.path);
    const auto found = m_byFolder.constFind(folder);
    known.folder = found != m_byFolder.cend() ? *found : static_cast<int>(m_folders.size());
    if (found == m_byFolder.cend()) {
        m_byFolder.insert(folder, known.folder);
        m_folders.append(folder);
    }
    const qsizetype slash = known.path.lastIndexOf('/');
    known.name = known.path.constData() + (known.path.size() > 1 ? slash + 1 : 0);
    return known;
}
