#include "StoreWorld.h"

#include "store/DroppedImage.h"

#include <QBuffer>
#include <QMimeDatabase>
#include <QRegularExpression>

namespace {

QString q(const char *text)
{
    return QString::fromUtf8(text);
}

QByteArray encoded(const char *format)
{
    QImage image(3, 2, QImage::Format_ARGB32);
    image.fill(QColor(1, 2, 3));
    QBuffer buffer;
    EXPECT_TRUE(image.save(&buffer, format));
    return buffer.data();
}

QMimeType type(const char *name)
{
    return QMimeDatabase().mimeTypeForName(q(name));
}

}

TEST(AddTest, EachFileIsTakenOnce)
{
    World w;
    const QUrl a = w.file("a");
    const QUrl b = w.file("b");
    w.write(w.home() + "/folder/x", "");
    const QUrl folder = FilePath::toUrl(w.home() + "/folder", FilePath::Kind::Directory);
    const QUrl bareFolder = FilePath::toUrl(w.home() + "/folder");
    const QUrl missing = FilePath::toUrl(w.home() + "/missing");
    const QUrl foreign[] = { QUrl(q("https://x/y")), QUrl(), QUrl(q("file://other.host/x")) };
    const struct
    {
        const char *what;
        QList<QUrl> first, second, result;
        size_t sounds;
    } cases[] = {
        { "twice in one drop", {}, { b, a, b }, { b, a }, 1 },
        { "a known one alone", { a }, { a }, { a }, 1 },
        { "a known and a new one", { a }, { a, b }, { a, b }, 2 },
        { "a folder in both spellings", { bareFolder }, { folder, bareFolder }, { folder }, 1 },
        { "a file with a slash", {}, { QUrl(a.toString() + u'/'), a }, { a }, 1 },
        { "another spelling",
          { a },
          { QUrl::fromEncoded("file://" + w.home() + "/./%61") },
          { a },
          1 },
        { "a file that is not there", {}, { missing }, { missing }, 1 },
        { "what is no file", {}, { foreign[0], foreign[1], foreign[2] }, {}, 0 },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        w.end();
        NativeFile::remove(w.paths().dataDir);
        w.restart().add(c.first);
        w.store().add(c.second);
        EXPECT_EQ(w.urls(), c.result);
        EXPECT_EQ(w.sounds.played, std::vector(c.sounds, Sound::Pop));
        EXPECT_EQ(w.saved().has_value(), c.sounds > 0);
    }
}

TEST(AddTest, AnAdditionIsOnDiskAtOnceWithEveryByteOfItsName)
{
    World w;
    const QList<QUrl> urls { w.file("caf\xc3\xa9 %41"), w.file("bad\xff\xfe"),
                             w.file("line\nbreak"), w.file("#?;&") };
    w.store().add(urls);
    EXPECT_EQ(w.store().items.value().first().addedAt, w.queue.now());
    const auto before = w.store().items.value();
    EXPECT_EQ(w.restart().items.value(), before);
    EXPECT_EQ(w.urls(), urls);
}

TEST(AddTest, TextBecomesASnippetOrALink)
{
    const QString many = QString(70, QLatin1Char('x'));
    const QString accents = q("e\u0301").repeated(70);
    const struct
    {
        const char *what;
        QString text;
        std::optional<QString> preview;
        const char *link;
    } cases[] = {
        { "an address between blanks", q(" \n https://www.a.org/b/?q=1 \t"), q("a.org/b"),
          "https://www.a.org/b/?q=1" },
        { "escapes of every kind", q("http://a.org/%7eu%c3%a9?x=%2f"), q("a.org/~ué"),
          "http://a.org/%7eu%c3%a9?x=%2f" },
        { "a percent sign", q("http://a.org/b?x=%26&y=100%"), q("a.org/b"),
          "http://a.org/b?x=%26&y=100%25" },
        { "letters", q("http://dé.org/Köln"), q("dé.org/Köln"), "http://xn--d-bga.org/K%C3%B6ln" },
        { "a host of numbers", q("http://1.2.3/"), q("1.2.0.3"), "http://1.2.3/" },
        { "what cannot be read again", q("http://[::1%25a]%3a]"), q("http://[::1%25a]%3a]"),
          nullptr },
        { "another address when read again", q("http://a.org/#b#c"), q("http://a.org/#b#c"),
          nullptr },
        { "too long for an address", q("http://a.org/") + QString(40000, u'x'),
          q("http://a.org/") + many.left(47), nullptr },
        { "a scheme in capitals", q("HTTP://a.org"), q("a.org"), "HTTP://a.org" },
        { "a word and an address", q("see https://a.org"), q("see https://a.org"), nullptr },
        { "an address and a line", q("https://a.org\nx"), q("https://a.org"), nullptr },
        { "an odd space", q("https://a.org/\u3000x"), q("https://a.org/\u3000x"), nullptr },
        { "longer scheme", q("httpx://a.org"), q("httpx://a.org"), nullptr },
        { "no host", q("http:///x"), q("http:///x"), nullptr },
        { "other line ends", q("\r\n\u2028\u0085 first \t\rsecond"), q("first"), nullptr },
        { "a first line of blanks", q("  \nsecond"), std::nullopt, nullptr },
        { "only white space", q(" \n\t "), std::nullopt, nullptr },
        { "a long line", many, many.left(60), nullptr },
        { "characters of two parts", accents, accents.left(120), nullptr },
        { "characters outside the plane", q("😀").repeated(61), q("😀").repeated(60), nullptr },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        World w;
        w.store().addText(c.text);
        ASSERT_EQ(w.store().items.value().size(), 1);
        const ShelfItem item = w.store().items.value().first();
        EXPECT_EQ(item.preview, c.preview);
        EXPECT_EQ(item.link ? item.link->text() : QString(), q(c.link));
        EXPECT_TRUE(w.store().isManaged(item.url));
        EXPECT_TRUE(c.link || w.read(FilePath::fromUrl(item.url)) == c.text.toUtf8());
        EXPECT_EQ(w.sounds.played, std::vector { Sound::Pop });
        EXPECT_EQ(w.savedState()->shelves.first().items, QList { item });
        EXPECT_EQ(w.restart().items.value(), QList { item });
        EXPECT_EQ(item.link ? item.link->url().isValid() : true, true);
    }
}

/// Whatever "dropped" is, the main thread comes back, and nothing is lost.
TEST(AddTest, WhereNoFileCanBeMadeNothingHappens)
{
    for (const char *what : { "a file", "a circle", "no such folder" }) {
        SCOPED_TRACE(what);
        World w;
        w.store();
        const QByteArray dropped = w.data("dropped");
        if (q(what) == q("a file"))
            w.write(dropped, "");
        else
            ASSERT_EQ(
                symlink(q(what) == q("a circle") ? "dropped" : "/proc/none", dropped.constData()),
                0);
        w.store().addText(q("text"));
        w.store().addText(q("https://a.org/"));
        w.store().addImage(QImage(2, 2, QImage::Format_RGB32));
        w.store().makeDemoFile();
        w.queue.settle();
        EXPECT_TRUE(w.urls().isEmpty());
    }
}

TEST(AddTest, ImagesOfOneSecondNeverShareAFile)
{
    World w;
    // By chance alone, two of so many have one name in 7 runs of 10.
    for (int i = 0; i < 400; ++i)
        w.store().addImageData(QByteArray::number(i), {});
    w.queue.settle();
    EXPECT_EQ(w.urls().size(), 400);
    EXPECT_EQ(w.droppedNames().size(), 400);
    QSet<QByteArray> contents;
    for (const QUrl &url : w.urls())
        contents.insert(w.read(FilePath::fromUrl(url)));
    EXPECT_EQ(contents.size(), 400);
}

TEST(AddTest, TheSameTextTwiceIsTwoEntriesTheSameAddressOneAndBrokenTextNone)
{
    World w;
    for (const auto &text : { q("x"), q("x"), q("https://a.org/"), q(" https://a.org/ "),
                              QChar(0xd800) + q("x"), q("http://a.org/") + QChar(0xdc00) })
        w.store().addText(text);
    EXPECT_EQ(w.store().items.value().size(), 3);
    EXPECT_EQ(w.droppedNames().size(), 3);
}

TEST(AddTest, ManagedFilesAreNamedByKindTimeAndChance)
{
    World w;
    w.store().addText(q("x"));
    w.store().addText(q("https://a.org/?a=1&b=<x>"));
    const QString names = QString::fromUtf8(w.droppedNames().join('\n'));
    const QRegularExpression expected(
        q("^Link-%1-[0-9A-F]{4}\\.webloc\nText snippet-%1-[0-9A-F]{4}\\.txt$")
            .arg(qint64(w.queue.now()) + 978307200));
    EXPECT_TRUE(expected.match(names).hasMatch()) << qPrintable(names);
    EXPECT_EQ(w.read(w.dropped(w.droppedNames().at(0))), R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>URL</key>
	<string>https://a.org/?a=1&amp;b=%3Cx%3E</string>
</dict>
</plist>
)");
}

TEST(AddTest, ALinksTitleIsItsHostAndPath)
{
    const QString tail(100, QLatin1Char('x'));
    const std::pair<QString, QString> cases[] = {
        { q("http://www.d/a/b/?q=1#f"), q("d/a/b") },
        { q("https://d///"), q("d") },
        { q("https://www.www.d"), q("www.d") },
        { q("https://d/caf%C3%A9%20x"), q("d/café x") },
        { q("mailto:www.me@d"), q("mailto:www.me@dwww.me@d") }, // No host: the address, its path.
        { q("https://d/") + tail, q("d/") + tail.left(78) },
    };
    for (const auto &[url, title] : cases)
        EXPECT_EQ(ShelfStore::linkTitle(QUrl(url)), title);
}

TEST(AddTest, ImageDataKeepsItsBytesUnlessItIsTiffAndImagesBecomePng)
{
    const struct
    {
        const char *format, *type, *end;
    } cases[] = {
        { "jpg", "image/jpeg", ".jpg" },
        { "png", "image/png", ".png" },
        { "tiff", "image/tiff", ".png" },
        { "png", nullptr, ".png" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type ? c.type : "an image");
        World w;
        const QByteArray data = encoded(c.format);
        if (c.type)
            w.store().addImageData(data, type(c.type));
        else
            w.store().addImage(QImage::fromData(data));
        EXPECT_TRUE(w.store().items.value().isEmpty()); // Not on the main thread.
        w.queue.settle();
        ASSERT_EQ(w.store().items.value().size(), 1);
        const QByteArray path = FilePath::fromUrl(w.urls().first());
        EXPECT_TRUE(path.endsWith(c.end)) << path.constData();
        EXPECT_EQ(w.read(path), q(c.format) == q("tiff") ? encoded("png") : data);
        EXPECT_EQ(w.sounds.played, std::vector { Sound::Pop });
    }
}

TEST(AddTest, DamagedAndHostilePicturesAddNothing)
{
    World w;
    const QByteArray huge = "P6\n60000 60000\n255\nabc"; // The header of 10 GB.
    const QByteArray svg = R"(<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"/>)";
    const QByteArray tiff = encoded("tiff");
    // Qt may warn, and should do no more.
    const auto before
        = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    for (const QByteArray &data :
         { QByteArray(), QByteArray("no picture"), huge, svg, tiff.first(4), tiff.first(30) })
        w.store().addImageData(data, type("image/tiff"));
    w.store().addImage(QImage());
    w.queue.settle();
    qInstallMessageHandler(before);
    EXPECT_TRUE(w.store().items.value().isEmpty());
    EXPECT_TRUE(w.droppedNames().isEmpty());
}

TEST(AddTest, APictureLandsOnTheShelfThatIsCurrentThen)
{
    World w;
    const Shelf first = World::shelf({});
    const Shelf second = World::shelf({});
    w.writeState({ first.id, { first, second }, {} });
    w.store().addImageData(encoded("png"), type("image/png"));
    w.store().switchTo(second.id);
    w.queue.settle();
    EXPECT_EQ(w.savedState()->shelves.at(1).items.size(), 1);

    // The store may have gone by then.
    w.store().addImageData(encoded("png"), type("image/png"));
    w.end();
    w.queue.settle();
    EXPECT_EQ(w.droppedNames().size(), 2);
}

TEST(AddTest, TheBestImageTypeIsTheFirstThatIsNotTiff)
{
    const std::pair<QStringList, const char *> cases[] = {
        { { q("image/tiff"), q("image/png"), q("image/jpeg") }, "image/png" },
        { { q("text/plain"), q("image/tiff") }, "image/tiff" },
        { { q("text/html"), q("image/unheard-of"), q("application/x-qt-image") }, "" },
        { { q("image/x-xcf"), q("image/png") }, "image/x-xcf" },
    };
    for (const auto &[offered, best] : cases)
        EXPECT_EQ(DroppedImage::bestType(offered).value_or(QMimeType()).name(), q(best));
}

TEST(AddTest, TheDemoFileIsMadeOnceAndIsNoEntry)
{
    World w;
    const QUrl url = w.store().makeDemoFile();
    EXPECT_EQ(url, FilePath::toUrl(w.dropped("Try me.txt")));
    EXPECT_EQ(w.read(w.dropped("Try me.txt")), "Hello.");
    w.write(w.dropped("Try me.txt"), "changed");
    EXPECT_EQ(w.store().makeDemoFile(), url);
    EXPECT_EQ(w.read(w.dropped("Try me.txt")), "changed");
    EXPECT_TRUE(w.store().items.value().isEmpty());
}
