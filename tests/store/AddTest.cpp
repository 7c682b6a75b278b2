#include "StoreWorld.h"

#include "store/DroppedImage.h"
#include "store/WebLocation.h"

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

TEST(AddTest, EverySpellingIsTheOneFileAndOtherAddressesAreNone)
{
    World w;
    const QUrl a = w.file("a");
    w.write(w.home() + "/folder/x", "");
    const QUrl folder = FilePath::toUrl(w.home() + "/folder", FilePath::Kind::Directory);
    w.store().add({ QUrl(q("https://x/y")), QUrl(q("file://other.host/x")) });
    EXPECT_FALSE(w.saved());
    w.store().add({ FilePath::toUrl(w.home() + "/folder"), folder, QUrl(a.toString() + u'/'), a,
                    QUrl::fromEncoded("file://" + w.home() + "/./%61") });
    EXPECT_EQ(w.urls(), (QList { folder, a }));
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
        { "more slashes", q("http://www.www.d///"), q("www.d"), "http://www.www.d///" },
        { "a host of numbers", q("http://1.2.3/"), q("1.2.3"), "http://1.2.3/" },
        { "what cannot be read again", q("http://[::1%25a]%3a]"), q("http://[::1%25a]%3a]"),
          nullptr },
        { "another address when read again", q("http://a.org/#b#c"), q("http://a.org/#b#c"),
          nullptr },
        { "too long for an address", q("http://a.org/") + QString(40000, u'x'),
          q("http://a.org/") + many.left(47), nullptr },
        { "capitals", q("HTTP://b@WWW.A.org:8/C/"), q("WWW.A.org/C"), "HTTP://b@WWW.A.org:8/C/" },
        { "a host in brackets", q("http://[::1]:8/"), q("::1"), "http://[::1]:8/" },
        { "a word and an address", q("see https://a.org"), q("see https://a.org"), nullptr },
        { "an address and a line", q("https://a.org\nx"), q("https://a.org"), nullptr },
        { "an odd space", q("https://a.org/\u3000x"), q("https://a.org/\u3000x"), nullptr },
        { "longer scheme", q("httpx://a.org"), q("httpx://a.org"), nullptr },
        { "no host", q("http:///x"), q("http:///x"), nullptr },
        { "other line ends", q("\r\n\u2028\u0085 first \t\rsecond"), q("first"), nullptr },
        { "a first line of blanks", q("  \nsecond"), std::nullopt, nullptr },
        { "only white space", q(" \n\t "), std::nullopt, nullptr },
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
        const QByteArray content = w.read(FilePath::fromUrl(item.url));
        if (item.link) {
            EXPECT_EQ(WebLocation::decode(content).value_or(Address()).text, item.target().text);
        } else {
            EXPECT_EQ(content, c.text.toUtf8());
        }
        const QRegularExpression name((c.link ? q("^Link-%1-[0-9A-F]{4}\\.webloc$")
                                              : q("^Text snippet-%1-[0-9A-F]{4}\\.txt$"))
                                          .arg(qint64(w.queue.now()) + 978307200));
        EXPECT_TRUE(name.match(item.url.fileName()).hasMatch());
        EXPECT_EQ(w.restart().items.value(), QList { item });
    }
    EXPECT_EQ(ShelfStore::linkTitle(QUrl(q("https://d/") + many + many)).size(), 80);
    World w; // Links that only QUrl takes for one.
    for (const char *text : { "https://a.org/%7e", "https://A.org/%7e", "https://a.org/~" })
        w.store().addText(q(text));
    w.store().removeUrls({ w.store().items.value().first().target() });
    EXPECT_EQ(w.urls().size(), 2);
}

/// Whatever "dropped" is, the main thread comes back, and nothing is lost.
TEST(AddTest, WhereNoFileCanBeMadeNothingHappens)
{
    for (const char *target : { "", "dropped", "/proc/none" }) {
        SCOPED_TRACE(target);
        World w;
        w.store();
        if (const QByteArray dropped = w.data("dropped"); *target == '\0')
            w.write(dropped, "a file in its place");
        else
            ASSERT_EQ(symlink(target, dropped.constData()), 0);
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
    QSet<QByteArray> contents;
    for (const QUrl &url : w.urls())
        contents.insert(w.read(FilePath::fromUrl(url)));
    EXPECT_EQ(contents.size(), 400);
}

TEST(AddTest, ImageDataKeepsItsBytesUnlessItIsTiffAndImagesBecomePng)
{
    const struct
    {
        const char *format, *type, *end;
    } cases[] = { { "jpg", "image/jpeg", ".jpg" },
                  { "png", "image/png", ".png" },
                  { "tiff", "image/tiff", ".png" },
                  { "png", nullptr, ".png" } };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type ? c.type : "an image");
        World w;
        const QByteArray data = encoded(c.format);
        if (c.type)
            w.store().addImageData(data, type(c.type));
        else
            w.store().addImage(QImage::fromData(data));
        EXPECT_TRUE(w.store().items.value().isEmpty()); // Not on the main thread.
        w.pictures.decodeData();
        w.queue.settle();
        ASSERT_EQ(w.store().items.value().size(), 1);
        const QByteArray path = FilePath::fromUrl(w.urls().first());
        EXPECT_TRUE(path.endsWith(c.end)) << path.constData();
        EXPECT_EQ(w.read(path), q(c.format) == q("tiff") ? encoded("png") : data);
    }
}

TEST(AddTest, PicturesThatCannotBeDecodedAndBrokenTextsAddNothing)
{
    World w;
    w.store().addImageData("no picture", type("image/tiff"));
    w.pictures.decodeData();
    w.store().addImage(QImage());
    w.store().addText(QChar(0xd800) + q("x"));
    w.store().addText(q("http://a.org/") + QChar(0xdc00));
    w.queue.settle();
    EXPECT_TRUE(w.store().items.value().isEmpty());
    EXPECT_TRUE(w.droppedNames().isEmpty());
}

TEST(AddTest, TheBestImageTypeIsTheFirstThatIsNotTiff)
{
    const std::pair<QStringList, const char *> cases[] = {
        { { q("image/tiff"), q("image/x-xcf"), q("image/jpeg") }, "image/x-xcf" },
        { { q("text/plain"), q("image/tiff") }, "image/tiff" },
        { { q("text/html"), q("image/unheard-of"), q("application/x-qt-image") }, "" },
    };
    for (const auto &[offered, best] : cases)
        EXPECT_EQ(DroppedImage::bestType(offered).value_or(QMimeType()).name(), q(best));
}

TEST(AddTest, TheDemoFileIsMadeOnceAndIsNoEntry)
{
    World w;
    w.spelling = "/.";
    const QUrl demo = FilePath::toUrl(FilePath::standardized(w.dropped("Try me.txt")));
    for (const char *content : { "Hello.", "changed" }) {
        EXPECT_EQ(w.store().makeDemoFile(), demo) << "As its entry is spelled.";
        EXPECT_EQ(w.read(w.dropped("Try me.txt")), content);
        w.write(w.dropped("Try me.txt"), "changed");
    }
    EXPECT_TRUE(w.store().items.value().isEmpty());
}
