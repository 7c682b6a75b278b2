#include "platform/linux/DropFormats.h"
#include "platform/linux/DragFormats.h"

#include "base/FilePath.h"

#include <QFile>
#include <QHash>
#include <QSysInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

using namespace Qt::StringLiterals;

QByteArrayList spelled(const QByteArray &uriList)
{
    QByteArrayList list;
    for (const QUrl &url : DropFormats::urls(uriList))
        list.append(url.toEncoded());
    return list;
}

QByteArray utf16(const QString &text)
{
    return { reinterpret_cast<const char *>(text.utf16()), text.size() * 2 };
}

}

TEST(DropFormatsTest, AListOfAddressesKeepsEveryByteOfItsFiles)
{
    struct Case
    {
        const char *what;
        QByteArray list;
        QByteArrayList urls;
    };
    const QByteArray own = QSysInfo::machineHostName().toUtf8();
    const Case cases[] = {
        { "order, comments, blank lines, every line ending",
          "# c\r\nfile:///b\r\n\r\nfile:///a\nfile:///c\r",
          { "file:///b", "file:///a", "file:///c" } },
        { "escapes of bytes that are not UTF-8", "file:///n%E4me%ff", { "file:///n%E4me%FF" } },
        { "the same bytes without escapes", "file:///n\xE4me", { "file:///n%E4me" } },
        { "newline and percent sign in a name",
          "file:///a%0Ab/100%25",
          { "file:///a%0Ab/100%25" } },
        { "broken escapes",
          "file:///a%\nfile:///b%4\nfile:///c%zz",
          { "file:///a%25", "file:///b%254", "file:///c%25zz" } },
        { "this machine's names",
          "file://localhost/a\nfile://" + own + "/b\nfile:/c",
          { "file:///a", "file:///b", "file:///c" } },
        { "another machine, no path, a zero byte",
          "file://elsewhere/a\nfile://\nfile:x\nfile:///a%00b",
          {} },
        { "a directory, and a way around",
          "file:///a/b/\nfile:///a/./c/../d",
          { "file:///a/b/", "file:///a/d" } },
        { "a place in a page", "file:///page.html#top", { "file:///page.html" } },
        { "web addresses among files",
          "https://example.org/?a=b#c\nFILE:///a\nnonsense\n://",
          { "https://example.org/?a=b#c", "file:///a" } },
        { "zero bytes at the end", QByteArray("file:///a\r\n\0\0", 13), { "file:///a" } },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(spelled(c.list), c.urls);
    }
}

TEST(DropFormatsTest, HostileDataIsReadToItsEnd)
{
    EXPECT_TRUE(spelled(QByteArray(100'000, '\n')).isEmpty());
    EXPECT_TRUE(spelled(QByteArray(100'000, '\0')).isEmpty());
    EXPECT_EQ(spelled("file:///" + QByteArray(100'000, '%')).size(), 1);
    for (const auto &type :
         { u"text/plain"_s, u"text/unicode"_s, u"text/html"_s, u"STRING"_s, u"UTF8_STRING"_s }) {
        SCOPED_TRACE(qPrintable(type));
        EXPECT_FALSE(DropFormats::text(type, {}));
        EXPECT_FALSE(DropFormats::text(type, QByteArray(3, '\0')));
        EXPECT_TRUE(DropFormats::text(type, "\xff\xfe\xfdx"));
    }
    EXPECT_FALSE(DropFormats::text(u"text/html"_s, QByteArray("<b>x").repeated(100'000)));
    for (const auto &type : { u"text/x-moz-url"_s, u"_NETSCAPE_URL"_s }) {
        EXPECT_FALSE(DropFormats::url(type, {}));
        EXPECT_FALSE(DropFormats::url(type, "x"));
        EXPECT_FALSE(DropFormats::url(type, QByteArray(100'000, '\0')));
    }
}

TEST(DropFormatsTest, TextIsDecodedAsItsTypeSays)
{
    struct Case
    {
        const char *what;
        QString type;
        QByteArray data;
        QString text;
    };
    const QString umlaut = u"\u00e4b"_s;
    const Case cases[] = {
        { "UTF-8", u"text/plain;charset=UTF-8"_s, "\xc3\xa4"_ba + "b", umlaut },
        { "UTF-8 with a zero at its end", u"UTF8_STRING"_s,
          QByteArray("\xc3\xa4"
                     "b\0",
                     4),
          umlaut },
        { "valid UTF-8 of unknown kind", u"text/plain"_s, "\xc3\xa4"_ba + "b", umlaut },
        { "not valid, so Latin-1", u"text/plain"_s, "\xe4"_ba + "b", umlaut },
        { "Latin-1", u"STRING"_s, "\xe4"_ba + "b", umlaut },
        { "UTF-16", u"text/unicode"_s, utf16(umlaut), umlaut },
        { "UTF-16 with a mark", u"text/unicode"_s, utf16(u"\ufeff"_s + umlaut), umlaut },
        { "UTF-16, the other way round", u"text/unicode"_s, QByteArray("\0a\0b", 4), u"ab"_s },
        { "a lone link", u"text/html"_s, "<html><body> <a href=\"https://a.b/c\">title</a>\n",
          u"https://a.b/c"_s },
        { "a lone picture", u"text/html"_s, "<img src=\"https://a.b/c.png\" alt=x>",
          u"https://a.b/c.png"_s },
        { "a picture in a link", u"text/html"_s, "<a href='https://a.b/'><img src='c.png'></a>",
          u"https://a.b/"_s },
        { "a page", u"text/html"_s, "<p>one <a href=\"https://a.b/\">two</a></p><p>three",
          u"one two\nthree"_s },
        { "a page in UTF-16", u"text/html"_s, utf16(u"<b>bold</b>"_s), u"bold"_s },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(DropFormats::text(c.type, c.data), c.text);
    }
}

TEST(DropFormatsTest, APageReadsNoFileThatItNames)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"style.css"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, folder.path().toUtf8().constData(), IN_OPEN), 0);

    const QByteArray address = "file://" + file.fileName().toUtf8();
    const QByteArray page = "<html><head><link rel='stylesheet' type='text/css' href='" + address
        + "'></head><body background='" + address + "'><table><tr><td style='background-image: url("
        + address + ")'>words<img src='" + address + "'></td></tr></table>";
    EXPECT_EQ(DropFormats::text(u"text/html"_s, page).value_or(QString()).trimmed(), u"words"_s);
    char event[4096];
    EXPECT_EQ(read(watch, event, sizeof event), -1) << "a file was opened";
    close(watch);
}

TEST(DropFormatsTest, BrowsersWriteAddressAndTitle)
{
    const QUrl url(u"https://example.org/a"_s);
    EXPECT_EQ(DropFormats::url(u"text/x-moz-url"_s, utf16(u"https://example.org/a\nTitle"_s)), url);
    EXPECT_EQ(DropFormats::url(u"_NETSCAPE_URL"_s, "https://example.org/a\nTitle"), url);
}

TEST(DropFormatsTest, TheBestTypeIsReadFirstAndUnknownOnesNever)
{
    const QStringList offered { u"text/html"_s,
                                u"STRING"_s,
                                u"text/plain"_s,
                                u"text/x-moz-url"_s,
                                u"text/plain;charset=utf-8"_s,
                                u"text/plain;charset=koi8-r"_s };
    EXPECT_EQ(DropFormats::textTypes(offered).join(u'|'),
              u"text/plain;charset=utf-8|text/plain|STRING|text/html"_s);
    EXPECT_EQ(DropFormats::urlTypes(offered), QStringList { u"text/x-moz-url"_s });

    EXPECT_TRUE(DropFormats::canHold(offered));
    EXPECT_TRUE(DropFormats::canHold({ u"x/y"_s, u"image/png"_s }));
    EXPECT_FALSE(DropFormats::canHold({ u"XdndDirectSave0"_s, u"application/octet-stream"_s }));
    EXPECT_FALSE(DropFormats::canHold({}));
}

TEST(DragFormatsTest, TextIsOfferedForLinksAndAListForFiles)
{
    const auto folder = FilePath::toUrl("/a b/raw_\xe4", FilePath::Kind::Directory);
    const QUrl link(u"https://example.org/?q=\u00e4"_s);

    const auto files = DragFormats::formatsFor({ folder, FilePath::toUrl("/c") });
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(files[0].type, u"text/uri-list"_s);
    EXPECT_EQ(files[0].data, "file:///a%20b/raw_%E4\r\nfile:///c\r\n");

    QHash<QString, QByteArray> mixed;
    for (const auto &format : DragFormats::formatsFor({ folder, link }))
        mixed.insert(format.type, format.data);
    EXPECT_EQ(mixed.value(u"text/uri-list"_s),
              "file:///a%20b/raw_%E4\r\nhttps://example.org/?q=%C3%A4\r\n");
    EXPECT_EQ(mixed.value(u"text/plain"_s), "https://example.org/?q=%C3%A4");
    EXPECT_EQ(DropFormats::url(u"text/x-moz-url"_s, mixed.value(u"text/x-moz-url"_s)), link);

    for (const auto &format : DragFormats::formatsFor({ link, link }))
        EXPECT_NE(format.type, u"text/uri-list"_s);
}

TEST(DragFormatsTest, TheClipboardHoldsFilesForFileManagersAndLinesForEditors)
{
    const auto formats = [](const QList<QUrl> &urls) {
        QHash<QString, QByteArray> byType;
        for (const auto &[type, data] : DragFormats::clipboardFormatsFor(urls))
            byType.insert(type, data);
        return byType;
    };
    const QUrl file = FilePath::toUrl("/a b/n\xE4me");
    const QUrl folder = FilePath::toUrl("/c", FilePath::Kind::Directory);
    const QUrl link(u"https://example.org/\u00FC"_s);

    const auto mixed = formats({ file, link, folder });
    EXPECT_EQ(mixed[u"x-special/gnome-copied-files"_s], "copy\nfile:///a%20b/n%E4me\nfile:///c");
    EXPECT_EQ(mixed[u"text/uri-list"_s], "file:///a%20b/n%E4me\r\nfile:///c\r\n");
    EXPECT_EQ(mixed[u"application/x-kde-cutselection"_s], "0");
    EXPECT_EQ(mixed[u"text/plain"_s], "/a b/n\xEF\xBF\xBDme\nhttps://example.org/%C3%BC\n/c");
    // What is read back is what was written.
    EXPECT_EQ(DropFormats::urls(mixed[u"x-special/gnome-copied-files"_s]),
              DropFormats::urls(mixed[u"text/uri-list"_s]));

    const auto linkAlone = formats({ link });
    EXPECT_EQ(linkAlone[u"text/plain"_s], "https://example.org/%C3%BC");
    EXPECT_EQ(DropFormats::url(u"text/x-moz-url"_s, linkAlone[u"text/x-moz-url"_s]),
              std::optional(QUrl::fromEncoded("https://example.org/%C3%BC")));
    for (const auto &type : { u"text/uri-list"_s, u"x-special/gnome-copied-files"_s })
        EXPECT_FALSE(linkAlone.contains(type));
}
