#pragma once

#include "base/FilePath.h"
#include "platform/Bookmarks.h"

#include <QHash>
#include <QSet>

#include <sys/stat.h>

/// Follows what a test says was moved. A bookmark is "bookmark of " and the path
/// at which it was made; without one the file at the address counts.
class FakeBookmarks final : public Bookmarks
{
public:
    Bookmarked make(const QUrl &url) override
    {
        const QByteArray path = FilePath::standardized(FilePath::fromUrl(url));
        struct stat information = {};
        if (silent.contains(path) || lstat(path.constData(), &information) != 0)
            return { FilePath::canonical(url), std::nullopt };
        const bool folder = S_ISDIR(information.st_mode);
        return { FilePath::toUrl(path, folder ? FilePath::Kind::Directory : FilePath::Kind::File),
                 bookmarkOf(path) };
    }

    bool mayBeOf(const QByteArray &bookmark, const QUrl &url) override
    {
        return moved.value(bookmark.mid(12)) == FilePath::fromUrl(url);
    }

    QList<BookmarkAnswer> resolve(const QList<BookmarkQuery> &queries, Bound) override
    {
        ++checks;
        QList<BookmarkAnswer> answers;
        for (const BookmarkQuery &query : queries)
            answers.append(answer(query));
        return answers;
    }

    static QByteArray bookmarkOf(const QByteArray &path) { return "bookmark of " + path; }

    QHash<QByteArray, QByteArray> moved; // From where the bookmark was made to where it is now.
    QSet<QByteArray> silent; // Paths that do not answer.
    QSet<QByteArray> searching; // Missing, and the search has not ended.
    QSet<QByteArray> trash; // Paths that count as trashed.
    int checks = 0;

private:
    BookmarkAnswer answer(const BookmarkQuery &query) const
    {
        using Outcome = BookmarkAnswer::Outcome;
        const QByteArray own = FilePath::fromUrl(query.url);
        if (silent.contains(own))
            return {};
        const bool present = FilePath::exists(own);
        if (!present && searching.contains(own))
            return { Outcome::Missing, query.url, false, std::nullopt };
        const auto here = present ? Outcome::Found : Outcome::Absent;
        if (!query.bookmark)
            return { here, query.url, false,
                     present ? std::optional(bookmarkOf(own)) : std::nullopt };
        const QByteArray made = query.bookmark->mid(12);
        const QByteArray now = moved.value(made, made);
        if (!query.bookmark->startsWith("bookmark of ") || !FilePath::exists(now))
            return { here, query.url, false, std::nullopt };
        return { Outcome::Found, FilePath::toUrl(now), trash.contains(now),
                 now == made ? std::nullopt : std::optional(bookmarkOf(now)) };
    }
};
