#pragma once

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "platform/linux/files/FileIdentity.h"
#include "platform/linux/files/LinuxBookmarks.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

inline void makeFolder(const QByteArray &path)
{
    NativeFile::makeFolder(path);
}

inline FileIdentity identityOf(const QByteArray &path)
{
    const FileLook look = lookAt(path);
    EXPECT_EQ(look.state, FileLook::State::Present) << path.constData();
    return look.identity;
}

/// Whatever is missing may be called so at once.
inline LinuxBookmarks::Bounds quick()
{
    LinuxBookmarks::Bounds bounds;
    bounds.lateVolumes = bounds.walksApart = 0;
    bounds.brief = bounds.near.seconds = 20; // However slow the machine is.
    return bounds;
}

/// A folder that counts as a whole file system, with a home in it.
struct BookmarkWorld
{
    explicit BookmarkWorld(LinuxBookmarks::Bounds b = quick(), const QByteArray &type = "ext4")
        : bounds(std::move(b))
    {
        begin();
        mount(path(""), type, identityOf(path("home")).device);
    }

    /// QTemporaryDir leaves names that are not UTF-8.
    ~BookmarkWorld() { NativeFile::remove(path("")); }
    BookmarkWorld(const BookmarkWorld &) = delete;
    BookmarkWorld &operator=(const BookmarkWorld &) = delete;

    void begin() const
    {
        NativeFile::remove(path(""));
        for (const char *name : { "home/one", "home/two/deep", "home/.local/share/Trash/files" })
            makeFolder(path(name));
        ::symlink("home", path("linked home").constData());
        file("home/one/a");
    }
    QByteArray path(const QByteArray &name) const
    {
        return FilePath::standardized(folder.path().toUtf8() + "/root/" + name);
    }
    void file(const QByteArray &name) const
    {
        ::close(::open(path(name).constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644));
    }
    void move(const QByteArray &from, const QByteArray &to) const
    {
        ASSERT_EQ(::rename(path(from).constData(), path(to).constData()), 0) << to.constData();
    }
    void mount(const QByteArray &point, const QByteArray &type, dev_t device)
    {
        table += "9 1 " + QByteArray::number(major(device)) + ':'
            + QByteArray::number(minor(device)) + " / " + point + " rw - " + type + " x rw\n";
        QFile file(folder.filePath(QStringLiteral("mountinfo")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(table) == table.size());
        file.close();
        restart();
    }
    void restart()
    {
        bookmarks = std::make_unique<LinuxBookmarks>(
            LinuxBookmarks::Places { path("linked home/.local/share/Trash"), QList { path("home") },
                                     folder.path().toUtf8() + "/mountinfo" },
            bounds);
    }
    BookmarkQuery query(const QByteArray &name) const
    {
        const Bookmarked made = bookmarks->make(FilePath::toUrl(path(name)));
        return { made.url, made.bookmark };
    }
    BookmarkAnswer check(const BookmarkQuery &query,
                         Bookmarks::Bound bound = Bookmarks::Bound::Background) const
    {
        return bookmarks->resolve({ query }, bound).value(0);
    }
    /// Checks until a search outside has ended.
    BookmarkAnswer checkToTheEnd(const BookmarkQuery &query) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        BookmarkAnswer answer = check(query);
        using Outcome = BookmarkAnswer::Outcome;
        while ((answer.outcome == Outcome::Missing || answer.outcome == Outcome::Unanswered)
               && std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
            answer = check(query);
        }
        return answer;
    }

    QTemporaryDir folder;
    QByteArray table;
    LinuxBookmarks::Bounds bounds;
    std::unique_ptr<LinuxBookmarks> bookmarks;
};

class FollowingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const QTemporaryDir folder;
        if (!identityOf(folder.path().toUtf8()).hasBirth)
            GTEST_SKIP() << "no birth times on the file system of the temporary folder";
    }
};
