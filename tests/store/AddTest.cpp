#include "StoreWorld.h"

#include "store/DroppedImage.h"

#include <QBuffer>
#include <QMimeDatabase>

namespace {

QString q(const char *text)
{
    return QString::fromUtf8(text);
}

QByteArray encoded(const char *format)
{
    QImage image(3, 2, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return buffer.data();
}

QMimeType type(const char *name)
{
    return QMimeDatabase().mimeTypeForName(q(name));
}

/// Damaged pictures make Qt warn, which is all it should do.
class SilencedQt
{
public:
    SilencedQt()
        : m_before(
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {}))
    {
    }
    ~SilencedQt() { qInstallMessageHandler(m_before); }
    SilencedQt(const SilencedQt &) = delete;
    SilencedQt &operator=(const SilencedQt &) = delete;

private:
    QtMessageHandler m_before;
};

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
    const struct
    {
        const char *what;
        QList<QUrl> first, second;
        QList<QUrl> result;
        size_t sounds;
    } cases[] = {
        { "two new ones", {}, { b, a }, { b, a }, 1 },
        { "a known one again", { a }, { a }, { a }, 1 },
        { "twice in one drop", {}, { a, a }, { a }, 1 },
        { "a known and a new one", { a }, { a, b }, { a, b }, 2 },
        { "a folder in both spellings", { bareFolder }, { folder, bareFolder }, { folder }, 1 },
        { "a file with a slash", {}, { QUrl(a.toString() + QLatin1Char('/')), a }, { a }, 1 },
        { "a file that is not there", {}, { missing }, { missing }, 1 },
        { "what is no file",
          {},
          { QUrl(q("https://x/y")), QUrl(), QUrl(q("file://other.host/x")) },
          {},
          0 },
        { "nothing", {}, {}, {}, 0 },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        w.end();
        DataFiles::remove(w.paths().dataDir);
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
        { "a word", q("word"), q("word"), nullptr },
        { "an address between blanks", q(" \n https://www.a.org/b/?q=1 \t"), q("a.org/b"),
          "https://www.a.org/b/?q=1" },
        { "a scheme in capitals", q("HTTP://a.org"), q("a.org"), "http://a.org" },
        { "a word and an address", q("see https://a.org"), q("see https://a.org"), nullptr },
        { "an address and a line", q("https://a.org\nx"), q("https://a.org"), nullptr },
        { "an odd space", q("https://a.org/\u3000x"), q("https://a.org/\u3000x"), nullptr },
        { "another scheme", q("ftp://a.org"), q("ftp://a.org"), nullptr },
        { "longer scheme", q("httpx://a.org"), q("httpx://a.org"), nullptr },
        { "no host", q("http:///x"), q("http:///x"), nullptr },
        { "no address", q("http"), q("http"), nullptr },
        { "bad host", q("http://[x"), q("http://[x"), nullptr },
        { "leading empty lines", q("\n\n  first\nsecond"), q("first"), nullptr },
        { "other line ends", q("\r\n\u2028\u0085 first \t\rsecond"), q("first"), nullptr },
        { "a first line of blanks", q("  \nsecond"), std::nullopt, nullptr },
        { "only white space", q(" \n\t "), std::nullopt, nullptr },
        { "nothing", QString(), std::nullopt, nullptr },
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
        EXPECT_EQ(item.link, c.link ? std::optional(QUrl(q(c.link))) : std::nullopt);
        EXPECT_TRUE(w.store().isManaged(item.url));
        if (!c.link) {
            EXPECT_EQ(DataFiles::read(FilePath::fromUrl(item.url)), c.text.toUtf8());
        }
        EXPECT_EQ(w.sounds.played, std::vector { Sound::Pop });
        EXPECT_EQ(w.savedState()->shelves.first().items, QList { item });
    }
}

TEST(AddTest, TextThatIsNoTextIsLeft)
{
    World w;
    w.store().addText(QString(QChar(0xd800)) + QLatin1Char('x'));
    w.store().addText(q("http://a.org/") + QChar(0xdc00));
    EXPECT_TRUE(w.store().items.value().isEmpty());
    EXPECT_TRUE(w.droppedNames().isEmpty());
}

TEST(AddTest, TheSameTextTwiceIsTwoEntriesAndTheSameAddressOne)
{
    World w;
    w.store().addText(q("x"));
    w.store().addText(q("x"));
    w.store().addText(q("https://a.org/"));
    w.store().addText(q(" https://a.org/ "));
    EXPECT_EQ(w.store().items.value().size(), 3);
    EXPECT_EQ(w.droppedNames().size(), 3);
}

TEST(AddTest, ManagedFilesAreNamedByKindTimeAndChance)
{
    World w;
    w.store().addText(q("x"));
    w.store().addText(q("https://a.org/?a=1&b=<x>"));
    const QByteArray seconds = QByteArray::number(qint64(w.queue.now()) + 978307200);
    ASSERT_EQ(w.droppedNames().size(), 2);
    const auto expectName = [](const QByteArray &name, const QByteArray &start,
                               const QByteArray &end) {
        EXPECT_TRUE(name.startsWith(start) && name.endsWith(end)) << name.constData();
        const QByteArray random = name.mid(start.size()).chopped(end.size());
        EXPECT_TRUE(random.size() == 4 && QByteArray::fromHex(random).toHex().toUpper() == random)
            << name.constData();
    };
    expectName(w.droppedNames().at(0), "Link-" + seconds + '-', ".webloc");
    expectName(w.droppedNames().at(1), "Text snippet-" + seconds + '-', ".txt");
    EXPECT_EQ(DataFiles::read(w.dropped(w.droppedNames().at(0))),
              R"(<?xml version="1.0" encoding="UTF-8"?>
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
    const struct
    {
        const char *url, *title;
    } cases[] = {
        { "http://www.d/a/b/?q=1#f", "d/a/b" },
        { "https://d/", "d" },
        { "https://d///", "d" },
        { "https://www.www.d", "www.d" },
        { "https://d/caf%C3%A9%20x", "d/café x" },
        { "mailto:www.me@d", "mailto:www.me@dwww.me@d" }, // No host: the address, then its path.
    };
    for (const auto &c : cases)
        EXPECT_EQ(ShelfStore::linkTitle(QUrl(q(c.url))), q(c.title)) << c.url;
    const QString title
        = ShelfStore::linkTitle(QUrl(q("https://d/") + QString(100, QLatin1Char('x'))));
    EXPECT_EQ(title, q("d/") + QString(78, QLatin1Char('x')));
}

TEST(AddTest, ImageDataKeepsItsBytesUnlessItIsTiff)
{
    const struct
    {
        const char *format, *type, *end;
        bool kept;
    } cases[] = {
        { "jpg", "image/jpeg", ".jpg", true },
        { "png", "image/png", ".png", true },
        { "tiff", "image/tiff", ".png", false },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type);
        World w;
        const QByteArray data = encoded(c.format);
        w.store().addImageData(data, type(c.type));
        EXPECT_TRUE(w.store().items.value().isEmpty()); // Not on the main thread.
        w.queue.settle();
        ASSERT_EQ(w.store().items.value().size(), 1);
        const QByteArray path = FilePath::fromUrl(w.urls().first());
        const QByteArray written = DataFiles::read(path).value_or("");
        EXPECT_TRUE(path.endsWith(c.end)) << path.constData();
        EXPECT_EQ(written == data, c.kept);
        EXPECT_EQ(QImage::fromData(written).size(), QSize(3, 2));
        EXPECT_EQ(w.sounds.played, std::vector { Sound::Pop });
    }
}

TEST(AddTest, AnImageIsWrittenAsPng)
{
    World w;
    QImage image(5, 4, QImage::Format_ARGB32);
    image.fill(QColor(1, 2, 3, 4));
    w.store().addImage(image);
    w.store().addImage(QImage());
    w.queue.settle();
    ASSERT_EQ(w.store().items.value().size(), 1);
    EXPECT_EQ(QImage::fromData(DataFiles::read(FilePath::fromUrl(w.urls().first())).value_or("")),
              image);
}

TEST(AddTest, DamagedAndHostilePicturesAddNothing)
{
    const SilencedQt silenced;
    World w;
    const QByteArray huge = "P6\n60000 60000\n255\nabc"; // The header of 10 GB.
    const QByteArray svg = R"(<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"/>)";
    const QByteArray tiff = encoded("tiff");
    const QByteArray broken[] = { "", "no picture", huge, svg, tiff.first(4), tiff.first(30) };
    for (const QByteArray &data : broken) {
        w.store().addImageData(data, type("image/tiff"));
        w.queue.settle();
        EXPECT_TRUE(w.store().items.value().isEmpty()) << data.toPercentEncoding().constData();
    }
    EXPECT_TRUE(w.droppedNames().isEmpty());
}

TEST(AddTest, APictureMayComeBackAfterTheStoreHasGone)
{
    World w;
    w.store().addImageData(encoded("png"), type("image/png"));
    w.end();
    w.queue.settle();
    EXPECT_EQ(w.droppedNames().size(), 1);
    EXPECT_TRUE(w.store().items.value().isEmpty());
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
}

TEST(DroppedImageTest, TheBestTypeIsTheFirstThatIsNotTiff)
{
    const struct
    {
        QStringList offered;
        const char *best;
    } cases[] = {
        { { q("image/png"), q("image/tiff") }, "image/png" },
        { { q("image/tiff"), q("image/png"), q("image/jpeg") }, "image/png" },
        { { q("text/plain"), q("image/tiff") }, "image/tiff" },
        { { q("text/html"), q("image/unheard-of"), q("application/x-qt-image") }, nullptr },
        { { q("image/x-xcf"), q("image/png") }, "image/x-xcf" },
        { {}, nullptr },
    };
    for (const auto &c : cases) {
        const auto best = DroppedImage::bestType(c.offered);
        EXPECT_EQ(best ? best->name() : QString(), q(c.best ? c.best : ""))
            << qPrintable(c.offered.join(QLatin1Char(' ')));
    }
}

TEST(AddTest, TheDemoFileIsMadeOnceAndIsNoEntry)
{
    World w;
    const QUrl url = w.store().makeDemoFile();
    EXPECT_EQ(url, FilePath::toUrl(w.dropped("Try me.txt")));
    EXPECT_EQ(DataFiles::read(w.dropped("Try me.txt")), "Hello.");
    w.write(w.dropped("Try me.txt"), "changed");
    EXPECT_EQ(w.store().makeDemoFile(), url);
    EXPECT_EQ(DataFiles::read(w.dropped("Try me.txt")), "changed");
    EXPECT_TRUE(w.store().items.value().isEmpty());
}
