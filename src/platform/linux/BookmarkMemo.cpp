#include "platform/linux/BookmarkMemo.h"

#include "base/FilePath.h"

void BookmarkMemo::beginCheck(qsizetype queries)
{
    ++m_check;
    m_passing.clear();
    const auto bound = static_cast<size_t>(4 * queries + 1024);
    if (m_known.size() <= bound && m_folders.size() <= static_cast<qsizetype>(bound))
        return;
    m_known.clear();
    m_folders.clear();
    m_byFolder.clear();
}

KnownBookmark &BookmarkMemo::of(const BookmarkQuery &query)
{
    if (!query.bookmark || query.bookmark->isEmpty()) {
        KnownBookmark &passing = m_passing.emplace_back();
        understand(passing, query);
        return passing;
    }
    KnownBookmark &known = m_known[query.bookmark->constData()];
    const bool same = known.check != 0 && known.bytes.size() == query.bookmark->size()
        && known.url == query.url;
    if (!same && known.check == m_check) { // Two entries share the bookmark.
        KnownBookmark &passing = m_passing.emplace_back();
        understand(passing, query);
        return passing;
    }
    if (!same) {
        known = {};
        understand(known, query);
    }
    known.check = m_check;
    return known;
}

void BookmarkMemo::understand(KnownBookmark &known, const BookmarkQuery &query)
{
    known.bytes = query.bookmark.value_or(QByteArray());
    known.url = query.url;
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
}
