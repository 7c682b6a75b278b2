#pragma once

#include "platform/Bookmarks.h"
#include "platform/linux/BookmarkCoding.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <deque>
#include <memory>
#include <unordered_map>

/// What a query comes to when it is understood.
struct KnownBookmark
{
    QByteArray bytes; // Held, so that no other bookmark gets their place in memory.
    QUrl url;
    QByteArray path; // Of the url; of the record where that names no file.
    bool pathIsUrls = false;
    std::optional<BookmarkRecord> record;
    int folder = 0; // Index of the path's folder in the memo.
    const char *name = nullptr; // The path's last component.
    quint32 links = 0; // When the file was last seen.
    quint64 mounts = 0; // The table's number when `remote` was told.
    bool remote = false;
    quint64 check = 0; // When it was last used.
};

/// Thousands of queries are the same at each check, every three seconds: they are
/// understood once. Bookmarks are recognised by where their bytes lie, since the
/// store's copies share them.
class BookmarkMemo
{
public:
    void beginCheck(qsizetype queries);
    /// Holds until the next check begins.
    KnownBookmark &of(const BookmarkQuery &query);
    const QList<QByteArray> &folders() const { return m_folders; }

private:
    void understand(KnownBookmark &known, const BookmarkQuery &query);

    std::unordered_map<const char *, KnownBookmark> m_known;
    std::deque<KnownBookmark> m_passing; // Not recognisable next time.
    QList<QByteArray> m_folders;
    QHash<QByteArray, int> m_byFolder;
    quint64 m_check = 0;
};
