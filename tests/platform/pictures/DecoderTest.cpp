#include "PictureWorld.h"

#include <QDir>

#include <fcntl.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Urgency = PictureDecoder::Urgency;

QImage flat(const QSize &size, const QColor &colour, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(size, format);
    image.fill(colour);
    return image;
}

QByteArray withOrientation(const QByteArray &jpeg, char orientation)
{
    QByteArray tags("\xff\xe1\x00\x22"
                    "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0?\0\0\0\0\0\0\0",
                    36);
    tags.replace('?', orientation);
    return jpeg.left(2) + tags + jpeg.mid(2);
}

const QByteArray drawing("<svg xmlns='http://www.w3.org/2000/svg' width='48' height='32'>"
                         "<rect width='48' height='32' fill='#c81e28'/></svg>");

QList<pid_t> decoders()
{
    return processes(VANTLE_BINARY_DIR "/bin/vantle-decoder");
}

}

TEST(Decoder, ShowsPicturesOfEveryKindUprightAndNeverEnlarged)
{
    PictureWorld w;
    const QSize size(48, 32);
    const QColor red(200, 30, 40), half(200, 30, 40, 128), none(0, 0, 0, 0), grey(90, 90, 90);
    const struct
    {
        QByteArray file;
        QSize whole;
        QColor colour;
    } cases[] = {
        { w.save("a.jpg", flat(size, red)), size, red },
        { w.save("a.png", flat(size, none, QImage::Format_ARGB32)), size, none },
        { w.save("deep.png", flat(size, half, QImage::Format_RGBA64)), size, half },
        { w.save("grey.jpg", flat(size, grey, QImage::Format_Grayscale8)), size, grey },
        { w.save("b.png", flat(size, Qt::red).convertToFormat(QImage::Format_Indexed8)), size,
          Qt::red },
        { PictureWorld::sample("cmyk.jpg"), size, QColor(237, 28, 36) },
        { PictureWorld::sample("flat.heic"), size, red },
        { PictureWorld::sample("flat.avif"), size, red },
        { PictureWorld::sample("flat.jxl"), size, red },
        { w.save("a.bmp", flat(size, red)), size, red },
        { w.save("a.ico", flat(size, red)), size, red },
        { w.save("a.ppm", flat(size, red)), size, red },
        { PictureWorld::sample("pyramid.tif"), size, red },
        { PictureWorld::sample("pages.tif"), { 40, 20 }, Qt::red },
        { w.write("a.svg", drawing), size, red },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file.constData());
        for (const int edge : { 24, 480 }) {
            const auto picture = w.image(c.file, edge);
            ASSERT_TRUE(picture);
            EXPECT_EQ(picture->whole, c.whole);
            EXPECT_EQ(picture->count, 1);
            EXPECT_EQ(picture->image.size(),
                      edge > 48 ? c.whole : c.whole.scaled(24, 24, Qt::KeepAspectRatio));
            EXPECT_TRUE(isNear(picture->image.pixelColor(5, 5), c.colour));
        }
    }
}

TEST(Decoder, TurnsPhotographsAsTheyWereTaken)
{
    PictureWorld w;
    QImage corner = flat({ 64, 32 }, Qt::blue);
    QPainter(&corner).fillRect(0, 0, 32, 16, Qt::red);
    const QByteArray jpeg = PictureWorld::read(w.save("a.jpg", corner));
    // Where the upper left corner comes to lie: x, y.
    const int expected[8][2]
        = { { 0, 0 }, { 1, 0 }, { 1, 1 }, { 0, 1 }, { 0, 0 }, { 1, 0 }, { 1, 1 }, { 0, 1 } };
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        const auto picture = w.image(
            w.write("turned.jpg", withOrientation(jpeg, static_cast<char>(orientation))), 32);
        ASSERT_TRUE(picture);
        const bool side = orientation >= 5;
        EXPECT_EQ(picture->whole, side ? QSize(32, 64) : QSize(64, 32));
        const QSize size = picture->image.size();
        EXPECT_EQ(size, side ? QSize(16, 32) : QSize(32, 16));
        for (int y = 0; y < 2; ++y) {
            for (int x = 0; x < 2; ++x) {
                const QColor seen = picture->image.pixelColor(size.width() * (2 * x + 1) / 4,
                                                              size.height() * (2 * y + 1) / 4);
                const auto *place = expected[orientation - 1];
                EXPECT_TRUE(isNear(seen, x == place[0] && y == place[1] ? Qt::red : Qt::blue));
            }
        }
    }
}

TEST(Decoder, GivesAllOfAPictureThatCameAsBytesAndTakesNoDrawing)
{
    PictureWorld w;
    const auto decoded = [&](const QByteArray &data) {
        const auto ask = [&](auto given) { return w.decoder.imageFromData(data, given); };
        return w.answer<PictureDecoder::Picture>(ask).value_or(PictureDecoder::Picture()).image;
    };
    const QImage faint = flat({ 30, 20 }, QColor(201, 33, 47, 9), QImage::Format_ARGB32);
    EXPECT_EQ(decoded(PictureWorld::read(w.save("a.tif", faint))), faint);
    EXPECT_EQ(decoded(PictureWorld::read(w.save("a.ppm", faint))).size(), faint.size());
    const QByteArray jpeg = PictureWorld::read(w.save("a.jpg", flat({ 64, 32 }, Qt::red)));
    EXPECT_EQ(decoded(withOrientation(jpeg, 6)).size(), QSize(32, 64));
    const QByteArray huge = w.save("huge.png", QImage(8200, 8200, QImage::Format_Mono));
    for (const QByteArray &data : { QByteArray(), QByteArray("words"), jpeg.first(jpeg.size() / 2),
                                    PictureWorld::read(huge), drawing })
        EXPECT_TRUE(decoded(data).isNull()) << data.left(60).constData();
}

TEST(Decoder, GivesFramesOfAnimationsWithTheirTimes)
{
    PictureWorld w;
    const struct
    {
        const char *file;
        QList<int> times;
    } cases[] = { { "moving.gif", { 50, 100, 250 } }, { "moving.webp", { 50, 70, 250 } } };
    const QColor colours[] = { Qt::red, Qt::green, Qt::blue };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        const QByteArray file = PictureWorld::sample(c.file);
        const auto still = w.image(file, 20);
        ASSERT_TRUE(still);
        EXPECT_EQ(still->count, 3);
        EXPECT_EQ(still->whole, QSize(40, 20));
        for (int first = 0; first <= 3; ++first) {
            const auto frames = w.frames(file, first);
            ASSERT_TRUE(frames);
            ASSERT_EQ(frames->size(), 3 - first);
            for (int i = 0; i < frames->size(); ++i) {
                EXPECT_EQ(frames->at(i).milliseconds, c.times[first + i]);
                EXPECT_EQ(frames->at(i).image.size(), QSize(20, 10));
                EXPECT_TRUE(isNear(frames->at(i).image.pixelColor(9, 5), colours[first + i]));
            }
        }
    }
    EXPECT_FALSE(w.frames(PictureWorld::sample("pages.tif"), 0)) << "pages do not move";
    EXPECT_FALSE(w.frames(PictureWorld::sample("flat.jxl"), 0));
}

TEST(Decoder, GivesPagesOfDocuments)
{
    PictureWorld w;
    const QByteArray file = w.savePdf("a.pdf", { Qt::yellow, Qt::cyan });
    for (int number = 0; number < 2; ++number) {
        const auto page = w.page(file, number, 200);
        ASSERT_TRUE(page);
        EXPECT_EQ(page->count, 2);
        EXPECT_EQ(page->whole, QSize(300, 600));
        EXPECT_EQ(page->image.size(), QSize(100, 200));
        EXPECT_TRUE(isNear(page->image.pixelColor(5, 5), number == 0 ? Qt::yellow : Qt::cyan));
        int dark = 0;
        for (int y = 0; y < 200; ++y)
            for (int x = 0; x < 100; ++x)
                dark += page->image.pixelColor(x, y).lightness() < 60;
        EXPECT_GT(dark, 3) << "the word, in the font that the file carries";
    }
    EXPECT_FALSE(w.page(file, 2, 200));
    EXPECT_FALSE(w.page(file, -1, 200));
    const QByteArray whole = PictureWorld::read(file);
    EXPECT_FALSE(w.page(w.write("b.pdf", "%PDF-1.4 and no more"), 0, 200));
    EXPECT_FALSE(w.page(w.write("c.pdf", {}), 0, 200));
    w.page(w.write("d.pdf", whole.left(whole.size() / 2)), 0, 200); // Whatever comes of it.
    EXPECT_TRUE(w.page(file, 0, 200));
}

TEST(Decoder, ListsArchives)
{
    PictureWorld w;
    for (const char *name : { "names.zip", "names.tar", "names.tar.gz", "names.7z" }) {
        SCOPED_TRACE(name);
        const auto listing = w.archive(PictureWorld::sample(name));
        ASSERT_TRUE(listing);
        EXPECT_TRUE(listing->whole);
        ASSERT_EQ(listing->entries.size(), 2);
        const bool folderFirst = listing->entries[0].folder;
        const auto &folder = listing->entries[folderFirst ? 0 : 1];
        const auto &file = listing->entries[folderFirst ? 1 : 0];
        EXPECT_EQ(QDir::cleanPath(folder.path), QStringLiteral("Übung"));
        EXPECT_EQ(file.path, QStringLiteral("Übung/日本.txt"));
        EXPECT_EQ(file.size, 5);
        EXPECT_TRUE(folder.folder && !file.folder);
    }
    const QByteArray tar = PictureWorld::read(PictureWorld::sample("names.tar"));
    EXPECT_FALSE(w.archive(w.write("a.zip", "PK\3\4 and no more")));
    EXPECT_FALSE(w.archive(w.write("a.tar", QByteArray(4096, 'x'))));
    const auto cut = w.archive(w.write("b.tar", tar.left(tar.indexOf("12345") - 512 + 300)));
    EXPECT_TRUE(!cut || !cut->whole);

    const double start = w.queue.uptime();
    const auto endless = w.archive(PictureWorld::sample("bomb.tar.bz2"));
    EXPECT_LT(w.queue.uptime() - start, 7);
    ASSERT_TRUE(endless);
    EXPECT_FALSE(endless->whole);
    ASSERT_EQ(endless->entries.size(), 2);
    EXPECT_EQ(endless->entries[1].size, 40LL << 30);
}

TEST(Decoder, WhatIsNoPictureCostsItsAnswerAlone)
{
    PictureWorld w;
    ASSERT_EQ(::mkfifo(w.path("pipe.png").constData(), 0600), 0);
    ASSERT_EQ(::mkdir(w.path("folder.png").constData(), 0700), 0);
    const QByteArray jpeg = PictureWorld::read(w.save("a.jpg", flat({ 640, 480 }, Qt::red)));
    const QByteArray files[] = { w.path("pipe.png"),
                                 w.path("folder.png"),
                                 "/dev/zero",
                                 w.path("vanished.png"),
                                 "",
                                 w.write("empty.png", {}),
                                 w.write("words.png", "words"),
                                 w.write("head.jpg", jpeg.left(100)),
                                 PictureWorld::sample("bomb.png"),
                                 PictureWorld::sample("wide.png") };
    for (const QByteArray &file : files) {
        SCOPED_TRACE(file.constData());
        const double start = w.queue.uptime();
        EXPECT_FALSE(w.image(file, 64));
        EXPECT_FALSE(w.archive(file));
        EXPECT_LT(w.queue.uptime() - start, 2);
    }
    const auto cut = w.image(w.write("cut.jpg", jpeg.left(jpeg.size() * 2 / 3)), 64);
    ASSERT_TRUE(cut) << "shown as far as it goes";
    EXPECT_TRUE(isNear(cut->image.pixelColor(5, 5), Qt::red));
}

TEST(Decoder, OneThatIsKilledOrTakesTooLongIsReplaced)
{
    for (const bool killed : { true, false }) {
        SCOPED_TRACE(killed);
        PictureWorld w;
        w.queue.haste = killed ? 1 : 10; // A job may then take a second.
        int answers = 0;
        std::optional<PictureDecoder::Listing> listing;
        const Ticket slow = w.decoder.archive(FilePath::toUrl(PictureWorld::sample("bomb.tar.bz2")),
                                              [&](const auto &given) {
                                                  listing = given;
                                                  ++answers;
                                              });
        ASSERT_TRUE(w.waitFor([] { return !decoders().isEmpty(); }));
        const auto first = decoders();
        w.waitFor([] { return false; }, 0.3);
        ASSERT_EQ(answers, 0);
        for (const pid_t process : killed ? first : QList<pid_t>())
            ::kill(process, SIGKILL);
        EXPECT_TRUE(w.waitFor([&] { return answers > 0; }, 3));
        EXPECT_FALSE(listing);
        w.queue.haste = 1;
        EXPECT_TRUE(w.image(PictureWorld::sample("flat.heic"), 24));
        EXPECT_EQ(answers, 1);
        EXPECT_TRUE(w.waitFor([&] { return !decoders().contains(first[0]); }));
    }
    EXPECT_TRUE(PictureWorld().waitFor([] { return decoders().isEmpty(); }))
        << "they end with the pool";
}

TEST(Decoder, AProgramThatIsMissingOrCannotWorkIsNotStartedAgainAndAgain)
{
    PictureWorld w;
    const QByteArray starts = w.path("starts");
    const struct
    {
        QByteArray program;
        int most;
    } cases[] = { { "/nowhere/vantle-decoder", 0 },
                  { w.write("unable", "#!/bin/sh\necho x >> " + starts + "\nexit 69\n"), 4 } };
    ::chmod(cases[1].program.constData(), 0700);
    for (const auto &c : cases) {
        DecoderPool pool(QFile::decodeName(c.program), w.lanes, w.queue);
        int answers = 0;
        std::vector<Ticket> tickets;
        for (int i = 0; i < 12; ++i)
            tickets.push_back(pool.image(FilePath::toUrl(PictureWorld::sample("flat.jxl")), 24,
                                         Urgency::Row, [&](const auto &picture) {
                                             EXPECT_FALSE(picture);
                                             ++answers;
                                         }));
        EXPECT_TRUE(w.waitFor([&] { return answers == 12; }));
        EXPECT_LE(PictureWorld::read(starts).count('x'), c.most);
    }
}

TEST(Decoder, WhatCannotBeDecodedIsNotTriedAgainUntilTheFileChanges)
{
    PictureWorld w;
    const QByteArray file = w.write("a.png", "words");
    EXPECT_FALSE(w.image(file, 64));
    const auto stopped = decoders();
    for (const pid_t process : stopped)
        ::kill(process, SIGSTOP);
    const double start = w.queue.uptime();
    EXPECT_FALSE(w.image(file, 64));
    EXPECT_LT(w.queue.uptime() - start, 5) << "nobody was there to try";
    for (const pid_t process : stopped)
        ::kill(process, SIGCONT);
    w.save("a.png", flat({ 9, 9 }, Qt::red));
    EXPECT_TRUE(w.image(file, 64));
}

TEST(Decoder, AnswersAreHeldAgainstTheRequestAndSurplusFilesAreClosed)
{
    using DecoderProtocol::Result;
    PictureWorld w;
    const Result right { 4, 2, 40, 20, 1, 0, 32 };
    const auto with = [&](auto change) {
        Result result = right;
        change(result);
        return DecoderProtocol::encode(result);
    };
    const QByteArray whole = DecoderProtocol::encode(right);
    const QByteArray wrong[] = {
        "nonsense",
        whole + 'x',
        whole.chopped(1),
        with([](Result &r) { r.frames = 1 << 30; }),
        with([](Result &r) { r.width = 65; }),
        with([](Result &r) { r.height = -2; }),
        with([](Result &r) { r.width = r.height = 64; }), // More than there is.
        with([](Result &r) { r.bytes = 1LL << 40; }),
        with([](Result &r) { r.bytes = -32; }),
        with([](Result &r) { r.count = 0; }),
        with([](Result &r) { r.wholeWidth = -1; }),
        with([](Result &r) { r.frames = 1; }),
    };
    // It answers what stands in the file, with a hundred files.
    const QByteArray program
        = w.write("decoder",
                  "#!/usr/bin/python3\nimport os, socket\n"
                  "peer = socket.socket(fileno=99)\n"
                  "while True:\n"
                  "    job, files, *_ = socket.recv_fds(peer, 65536, 2)\n"
                  "    if not job: break\n"
                  "    socket.send_fds(peer, [os.read(files[0], 65536)], [0] * 100)\n");
    ::chmod(program.constData(), 0700);
    const auto openFiles = [] { return NativeFile::namesIn("/proc/self/fd").size(); };
    const auto round = [&] {
        DecoderPool pool(QFile::decodeName(program), w.lanes, w.queue);
        const auto ask = [&](const QByteArray &answer) {
            const QByteArray file = w.write("a.png", answer);
            return w.answer<PictureDecoder::Picture>([&](auto given) {
                return pool.image(FilePath::toUrl(file), 64, Urgency::Row, given);
            });
        };
        for (const QByteArray &answer : wrong)
            EXPECT_FALSE(ask(answer)) << answer.toHex().constData();
        EXPECT_EQ(ask(whole)->image.size(), QSize(4, 2));
    };
    round();
    const auto before = openFiles(); // With what threads and queues keep from now on.
    round();
    EXPECT_TRUE(w.waitFor([&] { return openFiles() <= before; }, 5));
    EXPECT_FALSE(DecoderProtocol::decodeListing(DecoderProtocol::encode(
        PictureDecoder::Listing { { { QStringLiteral("a"), -1, false } }, true })));
}

TEST(Decoder, WhatIsPreviewedGoesFirstAndWhatWasCancelledIsNotDone)
{
    PictureWorld w;
    const QByteArray cancelled = w.save("cancelled.png", flat({ 9, 9 }, Qt::red));
    const QByteArray file = w.save("a.png", flat({ 900, 900 }, Qt::red));
    const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(::inotify_add_watch(watch, cancelled.constData(), IN_OPEN), 0);
    std::vector<int> order;
    std::vector<Ticket> tickets;
    constexpr int rows = 20;
    for (int i = 0; i <= rows; ++i) {
        w.decoder.image(FilePath::toUrl(cancelled), 24, Urgency::Row,
                        [](const auto &) { ADD_FAILURE() << "cancelled"; });
        tickets.push_back(w.decoder.image(FilePath::toUrl(file), 24,
                                          i == rows / 2 ? Urgency::Preview : Urgency::Row,
                                          [&order, &tickets, i](const auto &picture) {
                                              EXPECT_TRUE(picture);
                                              order.push_back(i);
                                              tickets[static_cast<size_t>(i)].reset(); // Within.
                                          }));
    }
    ASSERT_TRUE(w.waitFor([&] { return order.size() == rows + 1; }));
    const auto place = [&](int i) { return std::ranges::find(order, i) - order.begin(); };
    // Two had begun, and what begins beside it on the other core may end before it.
    EXPECT_LE(place(rows / 2), 3);
    EXPECT_LE(place(rows), 5) << "rows that were asked for last show";
    char events[256];
    EXPECT_EQ(::read(watch, events, sizeof events), -1) << "it was opened";
    ::close(watch);
}

TEST(Decoder, AFileThatIsWrittenAnewHasAnotherVersion)
{
    PictureWorld w;
    const QByteArray file = w.save("a.png", flat({ 9, 9 }, Qt::red));
    const auto first = w.version(file);
    ASSERT_TRUE(first);
    EXPECT_EQ(w.image(file, 9)->version, *first);
    const QByteArray bytes = PictureWorld::read(file);
    const int open = ::open(file.constData(), O_WRONLY | O_CLOEXEC); // In its place, as long.
    EXPECT_EQ(::write(open, bytes.constData(), static_cast<size_t>(bytes.size())), bytes.size());
    ::close(open);
    const auto second = w.version(file);
    EXPECT_NE(second, first);
    w.save("b.png", flat({ 9, 9 }, Qt::red));
    ::rename(w.path("b.png").constData(), file.constData());
    EXPECT_NE(w.version(file), second);
    EXPECT_FALSE(w.version(w.path("vanished")));
}
