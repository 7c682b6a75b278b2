#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <optional>

/// A file's address as it is kept, and the opaque bytes by which the file is
/// found again after it was renamed or moved.
struct Bookmarked
{
    QUrl url; // A directory's ends with a slash.
    std::optional<QByteArray> bookmark; // None where the file cannot be looked at now.
};

/// What is known of one entry: where it says that its file is, and the bookmark
/// that was made of the file then.
struct BookmarkQuery
{
    QUrl url;
    std::optional<QByteArray> bookmark;
};

struct BookmarkAnswer
{
    enum class Outcome {
        Found, // By its bookmark, or without a usable one by its address: the file is at `url`.
        Unanswered, // The file system has not answered in time, or is not there yet.
        Missing, // Not where it was, nor found elsewhere so far; the search has not ended.
        Absent, // The same, and the search has ended: one look's whole evidence.
    };
    Outcome outcome = Outcome::Unanswered;
    QUrl url;
    bool trashed = false; // It has followed its file into a trash folder, the desktop's or another.
    std::optional<QByteArray> newBookmark; // Where the query had none, or a stale one.
};

/// Follows files of the user's that are renamed, moved, replaced or thrown away.
/// Never mounts anything and never shows anything.
class Bookmarks
{
public:
    virtual ~Bookmarks() = default;

    /// Looks at the file once. Does not wait for network file systems: there the
    /// address stays as it is, and the next check makes the bookmark. Any thread.
    virtual Bookmarked make(const QUrl &url) = 0;

    /// Whether the bookmark may be of the file at that address: false where one look
    /// rules it out, and for bytes that are no bookmark. Any thread.
    virtual bool mayBeOf(const QByteArray &bookmark, const QUrl &url) = 0;

    enum class Bound {
        Brief, // At most 0.3 seconds in all, whatever the file systems do.
        Background, // As long as one look at each file and a bounded search need.
    };
    /// One answer a query, in their order. All queries of a call share one
    /// search. What has a bookmark is never absent in a brief look. Any thread.
    virtual QList<BookmarkAnswer> resolve(const QList<BookmarkQuery> &queries, Bound bound) = 0;
};
