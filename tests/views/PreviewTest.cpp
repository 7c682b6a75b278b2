#include "app/settings/Localizer.h"
#include "base/FilePath.h"
#include "platform/MediaPlayer.h"
#include "platform/fake/FakeIcons.h"
#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/VirtualQueue.h"
#include "store/QuickLookController.h"
#include "views/preview/PreviewCache.h"
#include "views/preview/PreviewFiles.h"
#include "views/preview/PreviewWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <algorithm>

#include <sys/stat.h>

namespace {

using Kind = FakePictureDecoder::Kind;
using Shown = PreviewWindow::Shown;

PictureDecoder::Picture picture(QColor colour, const QSize &size, const QSize &whole,
                                const QByteArray &version = "1", int count = 1)
{
    PictureDecoder::Picture result;
    result.image = QImage(size, QImage::Format_RGB32);
    result.image.fill(colour);
    result.whole = whole;
    result.count = count;
    result.version = version;
    return result;
}

/// Notes what it is told.
class FakeMediaPlayer final : public MediaPlayer
{
public:
    explicit FakeMediaPlayer(QStringList &told)
        : m_told(told)
    {
    }
    ~FakeMediaPlayer() override { m_told.append(QStringLiteral("gone")); }
    void play() override { m_told.append(QStringLiteral("play")); }
    void pause() override { m_told.append(QStringLiteral("pause")); }
    void seek(double seconds) override { m_told.append(QStringLiteral("seek %1").arg(seconds)); }
    void setRoom(const QSize &) override { }

private:
    QStringList &m_told;
};

/// The window over a folder of files, a decoder that waits for its test, and virtual time.
struct PreviewWorld
{
    PreviewWorld()
    {
        window.bringToFront = [](QWidget &widget) { widget.show(); };
        window.onIndexChanged = [this](int index) { walked.append(index); };
        window.onKeyboardFree = [this] { ++closed; };
    }

    QUrl file(const QByteArray &name, const QByteArray &bytes = "x")
    {
        QFile made(QFile::decodeName(path(name)));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        made.write(bytes);
        return FilePath::toUrl(path(name));
    }
    QByteArray path(const QByteArray &name) const
    {
        return QFile::encodeName(folder.path()) + '/' + name;
    }
    void open(const QList<QUrl> &urls, int start = 0)
    {
        ql = { urls, start };
        window.open(QRect(700, 100, 100, 300)); // On a screen of 800 by 800.
        queue.settle();
    }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(&window, key, modifiers);
        queue.settle();
    }
    /// The latest request of that kind, which must be there.
    FakePictureDecoder::Request &last(Kind kind)
    {
        for (auto i = decoder.requests.rbegin(); i != decoder.requests.rend(); ++i) {
            if (i->kind == kind)
                return *i;
        }
        throw std::runtime_error("The decoder was not asked.");
    }
    void answer(const std::optional<PictureDecoder::Picture> &answer, Kind kind = Kind::Image)
    {
        const auto reply = last(kind).picture; // Answers ask for more.
        reply(answer);
        queue.settle();
    }
    QColor middle()
    {
        return window.grab().toImage().pixelColor(window.width() / 2, window.height() / 2);
    }
    bool says(const QString &text) const
    {
        for (const auto *label : window.findChildren<QLabel *>()) {
            if (label->isVisible() && label->text() == text)
                return true;
        }
        return false;
    }

    QTemporaryDir folder;
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    FakePictureDecoder decoder;
    FakeIcons icons;
    Localizer texts { QString(), {} }; // Every text shows as its key.
    PreviewCache cache { decoder, queue };
    QuickLookController ql;
    QList<int> walked;
    int closed = 0;
    FakeMediaPlayer *player = nullptr; // The last one that was made.
    QStringList told; // To players.
    PreviewWindow window { ql,
                           { decoder, cache, workers, queue, icons, texts, [this](const QUrl &) {
                                auto made = std::make_unique<FakeMediaPlayer>(told);
                                player = made.get();
                                return made;
                            } } };
};

}

TEST(PreviewTest, TheKeysWalkTheListUpToItsEnds)
{
    PreviewWorld w;
    EXPECT_EQ(w.window.previewItemAt(0), FilePath::toUrl("/", FilePath::Kind::Directory));
    QList<QUrl> urls;
    for (const char *name : { "a.txt", "b.txt", "c.txt", "d.txt", "e.txt" })
        urls.append(w.file(name));
    w.open(urls, 3);
    EXPECT_EQ(w.window.windowTitle(), QStringLiteral("d.txt"));
    EXPECT_TRUE(w.says(QStringLiteral("4 / 5")));
    EXPECT_EQ(w.window.previewItemAt(5), urls[0]);
    EXPECT_EQ(w.window.previewItemAt(-1), urls[0]);
    w.key(Qt::Key_Right);
    w.key(Qt::Key_Down); // Nothing is below the last one.
    w.key(Qt::Key_Up);
    w.key(Qt::Key_Left);
    EXPECT_EQ(w.walked, (QList<int> { 4, 3, 2 }));
    EXPECT_EQ(w.window.windowTitle(), QStringLiteral("c.txt"));
    w.window.setLayoutDirection(Qt::RightToLeft);
    w.key(Qt::Key_Left);
    EXPECT_EQ(w.window.windowTitle(), QStringLiteral("d.txt"));

    w.open(urls, 7);
    EXPECT_EQ(w.window.windowTitle(), QStringLiteral("a.txt"));
    w.key(Qt::Key_Space);
    EXPECT_FALSE(w.window.isVisible());
    EXPECT_EQ(w.closed, 1);

    w.open(urls);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, {}, QStringLiteral(" "), true);
    QApplication::sendEvent(&w.window, &held);
    EXPECT_TRUE(w.window.isVisible()) << "by the key that opened it, still held";
    QEvent left(QEvent::WindowDeactivate);
    QApplication::sendEvent(&w.window, &left);
    w.window.close();
    EXPECT_FALSE(w.window.isUp());
    EXPECT_EQ(w.closed, 1) << "another window has the keyboard";
}

TEST(PreviewTest, AnUpdatedListKeepsWhatIsShownUnlessAnotherIsChosen)
{
    PreviewWorld w;
    const QList<QUrl> urls { w.file("a.txt"), w.file("b.txt"), w.file("c.txt"), w.file("d.txt") };
    w.open(urls, 2);
    struct Case
    {
        const char *what;
        QuickLookController list;
        Shown shown;
        QString title;
        QString position;
    };
    const Case cases[] = {
        { "a is gone",
          { { urls[1], urls[2], urls[3] }, 1 },
          Shown::StartIndex,
          QStringLiteral("c.txt"),
          QStringLiteral("2 / 3") },
        { "nothing is selected",
          { { urls[1], urls[2], urls[3] }, 0 },
          Shown::Same,
          QStringLiteral("c.txt"),
          QStringLiteral("2 / 3") },
        { "c is gone",
          { { urls[1], urls[3] }, 0 },
          Shown::Same,
          QStringLiteral("d.txt"),
          QStringLiteral("2 / 2") },
        { "d as well", { { urls[1] }, 0 }, Shown::Same, QStringLiteral("b.txt"), {} },
        { "all are back, b is chosen",
          { urls, 1 },
          Shown::StartIndex,
          QStringLiteral("b.txt"),
          QStringLiteral("2 / 4") },
        { "with it another one",
          { { urls[0], urls[1] }, 0 },
          Shown::Same,
          QStringLiteral("b.txt"),
          QStringLiteral("2 / 2") },
        { "a alone",
          { urls, 0 },
          Shown::StartIndex,
          QStringLiteral("a.txt"),
          QStringLiteral("1 / 4") },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        w.ql = c.list;
        w.window.reloadData(c.shown);
        EXPECT_EQ(w.window.windowTitle(), c.title);
        EXPECT_TRUE(c.position.isEmpty() || w.says(c.position));
    }
    w.ql = {};
    w.window.reloadData(Shown::Same);
    EXPECT_FALSE(w.window.isVisible());
    EXPECT_FALSE(w.window.isUp());
}

TEST(PreviewTest, ALateAnswerDoesNotReplaceAnotherFilesPicture)
{
    PreviewWorld w;
    w.open({ w.file("a.png"), w.file("b.png"), w.file("c.png") });
    const auto late = w.last(Kind::Image).picture;
    w.key(Qt::Key_Down);
    w.answer(picture(Qt::blue, { 300, 300 }, { 300, 300 }));
    EXPECT_EQ(w.middle(), QColor(Qt::blue));
    late(picture(Qt::red, { 300, 300 }, { 300, 300 })); // Its page has not been deleted yet.
    EXPECT_EQ(w.middle(), QColor(Qt::blue));
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(w.decoder.requests.front().isCancelled());

    w.key(Qt::Key_Down); // Nothing is known of that one for a while.
    EXPECT_EQ(w.middle(), QColor(Qt::blue));
    w.queue.advance(1);
    EXPECT_NE(w.middle(), QColor(Qt::blue));
    w.answer(picture(Qt::red, { 300, 300 }, { 300, 300 }));
    EXPECT_EQ(w.middle(), QColor(Qt::red));
}

TEST(PreviewTest, APictureIsSharpenedAsFarAsItShows)
{
    PreviewWorld w;
    w.open({ w.file("a.jpg") });
    EXPECT_EQ(w.last(Kind::Image).maxPixel, PreviewCache::maxPixel);
    EXPECT_FALSE(w.window.isVisible());
    w.answer(picture(Qt::red, { 512, 384 }, { 4000, 3000 }));
    EXPECT_TRUE(w.window.isVisible());
    const int fitted = w.last(Kind::Image).maxPixel;
    EXPECT_GT(fitted, PreviewCache::maxPixel);
    EXPECT_LT(fitted, 4000);
    w.answer(picture(Qt::green, { fitted, fitted * 3 / 4 }, { 4000, 3000 }));
    EXPECT_EQ(w.middle(), QColor(Qt::green));
    for (int i = 0; i < 20; ++i)
        w.key(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(w.last(Kind::Image).maxPixel, fitted) << "while it is still moving";
    w.queue.advance(0.5);
    EXPECT_EQ(w.last(Kind::Image).maxPixel, 4000);
    w.answer(picture(Qt::blue, { 4000, 3000 }, { 4000, 3000 }));
    const size_t asked = w.decoder.requests.size();
    w.key(Qt::Key_0, Qt::ControlModifier);
    w.queue.advance(0.5);
    EXPECT_EQ(w.decoder.requests.size(), asked);
}

TEST(PreviewTest, AFileThatChangedSinceItWasKeptIsDecodedAgain)
{
    PreviewWorld w;
    const QList<QUrl> urls { w.file("a.png") };
    w.open(urls);
    w.answer(picture(Qt::red, { 200, 200 }, { 200, 200 }, "1"));
    w.queue.advance(1);
    w.key(Qt::Key_Escape);
    w.open(urls);
    EXPECT_EQ(w.middle(), QColor(Qt::red)) << "at once";
    w.queue.advance(1);
    const auto version = w.last(Kind::Version).version;
    version(QByteArray("2"));
    w.queue.settle();
    w.answer(picture(Qt::blue, { 300, 100 }, { 300, 100 }, "2"));
    EXPECT_EQ(w.middle(), QColor(Qt::blue));
    w.key(Qt::Key_Escape);
    w.open(urls);
    EXPECT_EQ(w.middle(), QColor(Qt::blue));
}

TEST(PreviewTest, OnlyPagesInViewAreRendered)
{
    PreviewWorld w;
    w.open({ w.file("a.pdf") });
    w.answer(picture(Qt::white, { 700, 1000 }, { 595, 842 }, "1", 500), Kind::Page);
    w.queue.advance(1);
    for (const auto &request : w.decoder.requests)
        EXPECT_LT(request.number, 4);
    // One that is on its way goes on when the view moves a little.
    const auto rendering = [&w] {
        return std::ranges::count_if(w.decoder.requests, [](const auto &request) {
            return request.number == 1 && !request.isCancelled();
        });
    };
    ASSERT_EQ(rendering(), 1);
    const size_t asked = w.decoder.requests.size();
    QWheelEvent turn({ 200, 200 }, w.window.mapToGlobal(QPointF(200, 200)), {}, { 0, -10 },
                     Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(w.window.childAt(200, 200), &turn);
    w.queue.advance(1);
    EXPECT_EQ(w.decoder.requests.size(), asked);
    EXPECT_EQ(rendering(), 1);
    w.key(Qt::Key_End);
    w.queue.advance(1);
    EXPECT_EQ(w.last(Kind::Page).number, 499);
    for (const auto &request : w.decoder.requests)
        EXPECT_TRUE(request.number < 4 || request.number > 495) << request.number;
}

TEST(PreviewTest, ALongAnimationRunsInPieces)
{
    PreviewWorld w;
    w.open({ w.file("a.gif") });
    w.answer(picture(Qt::red, { 100, 100 }, { 100, 100 }, "1", 25));
    QList<int> firsts;
    for (int i = 0; i < 8; ++i) {
        w.queue.advance(3); // Longer than any piece plays.
        const auto &request = w.last(Kind::Frames);
        firsts.append(request.number);
        const auto reply = request.frames;
        const int count = std::min(10, 25 - request.number);
        reply(QList<PictureDecoder::Frame>(count,
                                           { picture(Qt::green, { 100, 100 }, {}).image, 100 }));
    }
    EXPECT_EQ(firsts, (QList<int> { 0, 10, 20, 0, 10, 20, 0, 10 }));
    EXPECT_EQ(w.middle(), QColor(Qt::green));
}

TEST(PreviewTest, TextIsReadFromPlainFilesOnlyAndUpToABound)
{
    PreviewWorld w;
    const QByteArray megabyte(1 << 20, 'a');
    QByteArray split = megabyte;
    split.back() = '\xc3'; // The first half of a letter.
    for (qsizetype i = 99; i < split.size(); i += 100)
        split[i] = '\n';
    struct Case
    {
        const char *what;
        QByteArray bytes;
        QString start;
        bool whole;
    };
    const Case cases[] = {
        { "UTF-8", "h\xc3\xa9", QStringLiteral("h\u00e9"), true },
        { "UTF-16 by its mark", QByteArray("\xff\xfeh\0\xe9\0", 6), QStringLiteral("h\u00e9"),
          true },
        { "Latin-1", "h\xe9", QStringLiteral("h\u00e9"), true },
        { "nothing", "", QString(), true },
        { "one byte more than is read", split + "\xa9", QStringLiteral("aaaa"), false },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        w.file("a.txt", c.bytes);
        const auto text = PreviewFiles::readText(w.path("a.txt"));
        ASSERT_TRUE(text);
        EXPECT_TRUE(text->text.startsWith(c.start));
        EXPECT_LE(text->text.size(), (1 << 20) + 300);
        EXPECT_FALSE(text->text.endsWith(QChar(0xc3)));
        EXPECT_EQ(text->whole, c.whole);
    }
    w.file("lines.txt", QByteArray(1 << 20, '\n'));
    const auto lines = PreviewFiles::readText(w.path("lines.txt"));
    EXPECT_LE(lines->text.count(u'\n'), 50'000);
    EXPECT_FALSE(lines->whole);
    w.file("one-line.txt", megabyte);
    for (const QString &line : PreviewFiles::readText(w.path("one-line.txt"))->text.split(u'\n'))
        EXPECT_LE(line.size(), 4000);
    w.file("binary", QByteArray("a\0b", 3));
    ASSERT_EQ(mkfifo(w.path("pipe.txt").constData(), 0600), 0);
    for (const char *name : { "binary", "pipe.txt", "missing.txt", "." })
        EXPECT_FALSE(PreviewFiles::readText(w.path(name))) << name;
}

TEST(PreviewTest, WhatCannotBeShownShowsAsACard)
{
    PreviewWorld w;
    ASSERT_EQ(mkfifo(w.path("pipe.txt").constData(), 0600), 0);
    struct Case
    {
        QUrl url;
        std::optional<Kind> asks;
        QString line;
    };
    const Case cases[] = {
        { FilePath::toUrl(w.path("gone.txt")), {}, QStringLiteral("preview_gone") },
        { FilePath::toUrl(w.path("gone"), FilePath::Kind::Directory),
          {},
          QStringLiteral("preview_gone") },
        { FilePath::toUrl(w.path("pipe.txt")), {}, QStringLiteral("pipe.txt") },
        { w.file("broken.png"), Kind::Image, QStringLiteral("broken.png") },
        { w.file("broken.pdf"), Kind::Page, QStringLiteral("broken.pdf") },
        { w.file("broken.zip"), Kind::Archive, QStringLiteral("broken.zip") },
        { w.file("letters.ttf"), {}, QStringLiteral("letters.ttf") },
        { w.file("here.webloc",
                 "<plist version=\"1.0\"><dict><key>URL</key>"
                 "<string>https://example.org/a</string></dict></plist>"),
          {},
          QStringLiteral("https://example.org/a") },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.url.toString().toStdString());
        w.open({ c.url });
        if (c.asks == Kind::Archive)
            w.last(Kind::Archive).listing(std::nullopt);
        else if (c.asks)
            w.answer(std::nullopt, *c.asks);
        w.queue.settle();
        int lines = 0;
        for (const auto *label : w.window.findChildren<QLabel *>())
            lines += label->isVisible() && label->text() == c.line ? 1 : 0;
        EXPECT_EQ(lines, c.line == c.url.fileName() ? 2 : 1); // The header has the name as well.
        w.key(Qt::Key_Escape);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST(PreviewTest, AFilmPlaysWhenItIsToldTo)
{
    PreviewWorld w;
    w.open({ w.file("film.mkv"), w.file("sound.ogg"), w.file("list.m3u") });
    EXPECT_FALSE(w.window.isVisible());
    w.player->onOpened({ true, { 800, 600 } });
    w.player->onPicture(picture(Qt::red, { 400, 300 }, {}).image);
    ASSERT_TRUE(w.window.isVisible());
    EXPECT_EQ(w.middle(), QColor(Qt::red));
    EXPECT_GT(w.window.width(), 600);
    w.player->onState({ false, 0, 3723 });
    EXPECT_TRUE(w.says(QStringLiteral("0:00 / 1:02:03")));

    w.key(Qt::Key_Tab);
    w.key(Qt::Key_Tab); // Past the window's own button.
    const auto *button = dynamic_cast<QAbstractButton *>(w.window.focusWidget());
    ASSERT_TRUE(button && button->accessibleName() == QStringLiteral("preview_play"));
    QTest::keyClick(w.window.focusWidget(), Qt::Key_Space);
    EXPECT_EQ(button->accessibleName(), QStringLiteral("preview_pause"));
    w.player->onState({ true, 60, 3723 });
    auto *slider = w.window.findChild<QSlider *>();
    EXPECT_EQ(slider->value(), 60'000);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(slider, Qt::Key_Right);
    w.player->onState({ true, 60.2, 3723 });
    EXPECT_EQ(slider->value(), 75'000) << "moved back under the user's hand";
    w.queue.advance(1);
    w.player->onState({ false, 3723, 3723 });
    EXPECT_EQ(button->accessibleName(), QStringLiteral("preview_play"));
    EXPECT_EQ(w.told, (QStringList { QStringLiteral("play"), QStringLiteral("seek 75") }));

    // From the button the arrows walk; what it played is over then, and the focus not elsewhere.
    QTest::keyClick(w.window.focusWidget(), Qt::Key_Down);
    w.player->onOpened({});
    w.queue.settle();
    EXPECT_EQ(w.window.focusWidget(), &w.window);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(w.told.last(), QStringLiteral("gone"));
    const auto fail = w.player->onFailed;
    fail();
    w.queue.settle();
    EXPECT_FALSE(w.window.findChild<QSlider *>()->isVisible());
    w.player = nullptr;
    w.key(Qt::Key_Down); // Names places that nobody is to go to by looking at it.
    EXPECT_EQ(w.player, nullptr);
}

/// A word may be as long as a file's name: the window must not grow with it.
TEST(PreviewTest, ALongNameIsBrokenInTheCard)
{
    PreviewWorld w;
    w.open({ w.file(QByteArray(250, 'w'), QByteArray(3000, '\0')) });
    ASSERT_TRUE(w.window.isVisible());
    EXPECT_LT(w.window.width(), 800);
    EXPECT_TRUE(std::ranges::any_of(w.window.findChildren<QLabel *>(), [](const QLabel *label) {
        return label->isVisible() && label->text().startsWith(QStringLiteral("3.0 kB"));
    }));
}

TEST(PreviewTest, TheHeaderStaysAtTheTopWhileTheContentIsAwaited)
{
    PreviewWorld w;
    w.open({ w.file("a.pdf") });
    EXPECT_FALSE(w.window.isVisible());
    w.queue.advance(0.1);
    ASSERT_TRUE(w.window.isVisible());
    for (const auto *label : w.window.findChildren<QLabel *>())
        EXPECT_LT(label->geometry().bottom(), 60);
}
