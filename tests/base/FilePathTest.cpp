#include "base/FilePath.h"

#include <QSysInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

QUrl url(const char *text)
{
    return QUrl::fromEncoded(text);
}

}

TEST(FilePathTest, EveryByteOfAPathSurvivesTheUrl)
{
    QByteArray all = "/";
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const QByteArray &path :
         { all, QByteArray("/"), QByteArray("/a b/c%20d#e?f;g"), QByteArray("/caf\xc3\xa9"),
           QByteArray("/\xff\xfe/\xc3"), QByteArray("/line\nbreak"), QByteArray("/%41/%2F") }) {
        SCOPED_TRACE(path.toPercentEncoding().constData());
        const QUrl made = FilePath::toUrl(path);
        EXPECT_EQ(FilePath::fromUrl(made), FilePath::standardized(path));
        // Through text, as in the state file.
        EXPECT_EQ(QUrl::fromEncoded(made.toEncoded()), made);
        EXPECT_EQ(FilePath::canonical(made), FilePath::toUrl(FilePath::standardized(path)));
    }
}

TEST(FilePathTest, UrlsAreSpelledAsOtherProgramsDo)
{
    const struct
    {
        QByteArray path;
        FilePath::Kind kind;
        const char *url;
    } cases[] = {
        { "/Users/me/a b.png", FilePath::Kind::File, "file:///Users/me/a%20b.png" },
        { "/Users/me", FilePath::Kind::Directory, "file:///Users/me/" },
        { "/Users/me/", FilePath::Kind::File, "file:///Users/me" },
        { "/", FilePath::Kind::Directory, "file:///" },
        { "/a(1)&b+c,d=e@f:g!'*$", FilePath::Kind::File, "file:///a(1)&b+c,d=e@f:g!'*$" },
        { "/\xc3\xa4\xff", FilePath::Kind::File, "file:///%C3%A4%FF" },
        { "relative", FilePath::Kind::File, "" },
        { QByteArray("/a\0b", 4), FilePath::Kind::File, "" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.url);
        EXPECT_EQ(FilePath::toUrl(c.path, c.kind).toEncoded(), c.url);
    }
}

TEST(FilePathTest, OnlyFilesOfThisMachineHaveAPath)
{
    const QByteArray ours = QSysInfo::machineHostName().toUtf8();
    const struct
    {
        QByteArray url;
        const char *path;
    } cases[] = { { "file:///a/b", "/a/b" },
                  { "file:///a/b//", "/a/b" },
                  { "FILE://localhost/a", "/a" },
                  { "file://" + ours + "/a", "/a" },
                  { "file:/a", "/a" },
                  { "file:///", "/" },
                  { "file://elsewhere.example/a", "" },
                  { "file:///a%00b", "" },
                  { "file:a", "" },
                  { "http://localhost/a", "" },
                  { "/a", "" },
                  { "", "" } };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.url.constData());
        EXPECT_EQ(FilePath::fromUrl(url(c.url)), c.path);
    }
}

TEST(FilePathTest, SpellingsOfOneFileBecomeOne)
{
    const QUrl file = FilePath::toUrl("/x/caf\xc3\xa9 (1)");
    for (const char *spelling :
         { "file:///x/caf%C3%A9%20(1)", "file:///x/caf%c3%a9%20%281%29",
           "file://localhost/x/caf\xc3\xa9 (1)", "file:///y/../x/./caf%C3%A9%20(1)",
           "file:////x//caf%C3%A9 (1)" }) {
        SCOPED_TRACE(spelling);
        EXPECT_EQ(FilePath::canonical(url(spelling)), file);
    }
    EXPECT_EQ(FilePath::canonical(url("file:///x/y/")).toEncoded(), "file:///x/y/");
    EXPECT_FALSE(FilePath::canonical(url("https://x/y")).isValid());
}

TEST(FilePathTest, StandardisingIsLexical)
{
    const struct
    {
        const char *path, *result;
    } cases[] = { { "/a/b", "/a/b" },
                  { "/", "/" },
                  { "//", "/" },
                  { "/a//b/", "/a/b" },
                  { "/a/./b/.", "/a/b" },
                  { "/a/../b", "/b" },
                  { "/../..", "/" },
                  { "/.hidden/x", "/.hidden/x" },
                  { "/a/..b/c..", "/a/..b/c.." },
                  { "a/../../b", "../b" } };
    for (const auto &c : cases)
        EXPECT_EQ(FilePath::standardized(c.path), c.result) << c.path;
}

TEST(FilePathTest, PlacesAreComparedByWholeComponents)
{
    EXPECT_TRUE(FilePath::isBelow("/data/dropped/a", "/data/dropped"));
    EXPECT_TRUE(FilePath::isBelow("/data/x/../dropped/./a", "/data/dropped/"));
    EXPECT_TRUE(FilePath::isBelow("/a", "/"));
    EXPECT_FALSE(FilePath::isBelow("/data/dropped", "/data/dropped"));
    EXPECT_FALSE(FilePath::isBelow("/data/dropped2/a", "/data/dropped"));
    EXPECT_FALSE(FilePath::isBelow("/data/dropped/../a", "/data/dropped"));
    EXPECT_FALSE(FilePath::isBelow("", "/data"));

    EXPECT_EQ(FilePath::parent("/a/b/"), "/a");
    EXPECT_EQ(FilePath::parent("/"), "/");
    EXPECT_EQ(FilePath::lastComponent("/a/b/"), "b");
    EXPECT_EQ(FilePath::lastComponent("/"), "/");
}

TEST(FilePathTest, ALinkExistsWhereverItPoints)
{
    const QTemporaryDir folder;
    const QByteArray base = folder.path().toUtf8();
    const QByteArray link = base + "/link\xff";
    EXPECT_FALSE(FilePath::exists(link));
    ASSERT_EQ(symlink("/nowhere/at/all", link.constData()), 0);
    EXPECT_TRUE(FilePath::exists(link));
    EXPECT_FALSE(FilePath::exists(link + "/below"));
    EXPECT_FALSE(FilePath::exists(base + '/' + QByteArray(300, 'x'))); // No such name can be.
    EXPECT_FALSE(FilePath::exists(QByteArray()));
    unlink(link.constData()); // QTemporaryDir cannot spell it.
}
