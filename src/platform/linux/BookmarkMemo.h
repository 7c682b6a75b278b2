#pragma once

#include "platform/Bookmarks.h"
#include "platform/linux/BookmarkCoding.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <optional>
#include <vector>

/// What a query comes to when it is understood.
struct KnownBookmark
{
    BookmarkQuery query;
    QByteArray path; // Of the url; of the record where that names no file.
    bool pathIsUrls = false;
    std::optional<BookmarkRecord> record;
    int folder = 0; // Index of the path's folder in the memo.
    const char *name = nullptr; // The path's last component.
    quint64 mounts = 0; // The table's number when `remote` was told.
    bool remote = false;
};

/// Thousands of queries are the same at each check, every three seconds, and
/// nearly all at the same place of the list: those are understood once.
class BookmarkMemo
{
public:
    /// One for each query.
    std::vector<KnownBookmark> &understand(const QList<BookmarkQuery> &queries);
    const QList<QByteArray> &folders() const { return m_folders; }

private:
    KnownBookmark understood(const BookmarkQuery &query);

    std::vector<KnownBookmark> m_known;
    QList<QByteArray> m_folders;
    QHash<QByteArray, int> m_byFolder;
};
