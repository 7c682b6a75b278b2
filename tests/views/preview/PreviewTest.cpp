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
#include <QClipboard>
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

using namespace Qt::Literals::StringLiterals;
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
struct FakeMediaPlayer final : MediaPlayer
{
    explicit FakeMediaPlayer(QStringList &list)
        : told(list)
    {
    }
    ~FakeMediaPlayer() override { told.append(u"gone"_s); }
    void play() override { told.append(u"play"_s); }
    void pause() override { told.append(u"pause"_s); }
    void seek(double seconds) override { told.append(u"seek %1"_s.arg(seconds)); }
    void setRoom(const QSize &) override { }
    QStringList &told;
};

/// Whatever the preview does is about a file of the user's.
struct FileWorkers final : Workers
{
    void run(WorkerPriority, std::function<void()>) override { FAIL() << "among all other work"; }
    void runAt(const QByteArray &, std::function<void()> work) override { queue->post(work); }
    MainQueue *queue;
};

/// The window over a folder of files, a decoder that waits for its test, and virtual time.
struct PreviewWorld
{
    PreviewWorld()
    {
        workers.queue = &queue;
        window.bringToFront = [](QWidget &widget) { widget.show(); };
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
    void open(const QList<QUrl> &urls, int start = 0) { open({ urls, start, {} }); }
    void open(const QuickLookController &list)
    {
        ql = list;
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
    QWidget *page() { return window.childAt(window.rect().center()); }
    QColor middle()
    {
        return window.grab().toImage().pixelColor(window.width() / 2, window.height() / 2);
    }
    int says(const QString &text) const
    {
        return static_cast<int>(
            std::ranges::count_if(window.findChildren<QLabel *>(), [&](const auto *label) {
                return label->isVisible() && label->text() == text;
            }));
    }

    QTemporaryDir folder;
    VirtualQueue queue;
    FileWorkers workers;
    FakePictureDecoder decoder;
    FakeIcons icons;
    Localizer texts { QString(), {} }; // Every text shows as its key.
    PreviewCache cache { decoder, queue };
    QuickLookController ql;
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
    QList<QUrl> urls;
    for (const char *name : { "a.txt", "b.txt", "c.txt", "d.txt", "e.txt" })
        urls.append(w.file(name));
    w.open(urls, 3);
    EXPECT_EQ(w.window.windowTitle(), u"d.txt"_s);
    EXPECT_TRUE(w.says(u"4 / 5"_s));
    w.key(Qt::Key_Right);
    w.key(Qt::Key_Down); // Nothing is below the last one.
    w.key(Qt::Key_Up);
    w.key(Qt::Key_Left);
    EXPECT_EQ(w.window.windowTitle(), u"c.txt"_s);
    urls.resize(1200);
    w.open(urls, 1200);
    EXPECT_EQ(w.window.windowTitle(), u"a.txt"_s);
    EXPECT_TRUE(w.says(u"1 / 1200"_s));
    w.key(Qt::Key_Space);
    EXPECT_FALSE(w.window.isVisible());
    EXPECT_EQ(w.closed, 1);

    w.open(urls);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, {}, u" "_s, true);
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
    for (const char *name : { "a", "b", "c", "d" })
        w.file(name);
    const auto list = [&w](const char *names, int start) {
        QuickLookController result { {}, start, {} };
        for (const char *name = names; *name != 0; ++name)
            result.urls.append(FilePath::toUrl(w.path(QByteArray(name, 1))));
        return result;
    };
    w.open(list("abcd", 2));
    const std::tuple<const char *, const char *, int, Shown, const char *, const char *> cases[] = {
        { "a is gone", "bcd", 1, Shown::StartIndex, "c", "2 / 3" },
        { "nothing is selected", "bcd", 0, Shown::Same, "c", "2 / 3" },
        { "c is gone", "bd", 0, Shown::Same, "d", "2 / 2" },
        { "all are back, b is chosen", "abcd", 1, Shown::StartIndex, "b", "2 / 4" },
        { "with it another one", "ab", 0, Shown::Same, "b", "2 / 2" },
    };
    for (const auto &[what, names, start, shown, title, position] : cases) {
        SCOPED_TRACE(what);
        w.ql = list(names, start);
        w.window.reloadData(shown);
        EXPECT_EQ(w.window.windowTitle(), QLatin1String(title));
        EXPECT_TRUE(w.says(QLatin1String(position)));
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

/// Of an odd size: its middle is not on the grid where the window's is.
TEST(PreviewTest, APictureLiesOnThePixelGridAndOnACheckerboardOnlyIfItIsTransparent)
{
    for (const int alpha : { 255, 128 }) {
        PreviewWorld w;
        w.open({ w.file("a.png") });
        auto stripes = picture(QColor(0, 0, 0, alpha), { 301, 201 }, { 301, 201 });
        stripes.image = QImage(301, 201, QImage::Format_ARGB32_Premultiplied);
        for (int x = 0; x < 301; ++x) {
            for (int y = 0; y < 201; ++y)
                stripes.image.setPixel(x, y, x % 2 == 0 ? qRgba(0, 0, 0, alpha) : 0xffff0000);
        }
        w.answer(stripes);
        EXPECT_TRUE(w.says(u"301 × 201"_s));
        const QImage shown = w.page()->grab().toImage();
        QSet<QRgb> colours;
        qsizetype red = 0;
        for (int i = 0; i < shown.width() * shown.height(); ++i) {
            const QRgb pixel = shown.pixel(i % shown.width(), i / shown.width());
            colours.insert(pixel);
            red += pixel == 0xffff0000 ? 1 : 0;
        }
        EXPECT_EQ(red, 150 * 201);
        EXPECT_EQ(colours.size(), alpha == 255 ? 3 : 4) << "with what is around it";
    }
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
    const size_t asked = w.decoder.requests.size();
    QWheelEvent turn({ 200, 200 }, w.window.mapToGlobal(QPointF(200, 200)), {}, { 0, -10 },
                     Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(w.window.childAt(200, 200), &turn);
    w.queue.advance(1);
    EXPECT_EQ(w.decoder.requests.size(), asked);
    w.key(Qt::Key_End);
    w.queue.advance(1);
    EXPECT_EQ(w.last(Kind::Page).number, 499);
    for (const auto &request : w.decoder.requests)
        EXPECT_TRUE(request.number < 4 || request.number > 495) << request.number;
    EXPECT_EQ(w.page()->accessibleDescription(), u"500 / 500"_s) << "for who listens";
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
    QByteArray split(1 << 20, 'a');
    split.back() = '\xc3'; // The first half of a letter.
    for (qsizetype i = 99; i < split.size(); i += 100)
        split[i] = '\n';
    const struct
    {
        const char *what;
        QByteArray bytes;
        const char16_t *start;
        bool whole = true;
    } cases[] = {
        { "UTF-8", "h\xc3\xa9", u"h\u00e9" },
        { "UTF-16 by its mark", QByteArray("\xff\xfeh\0\xe9\0", 6), u"h\u00e9" },
        { "Latin-1", "h\xe9", u"h\u00e9" },
        { "one byte more than is read", split + "\xa9", u"aaaa", false },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        w.file("a.txt", c.bytes);
        const auto text = PreviewFiles::readText(w.path("a.txt"));
        ASSERT_TRUE(text);
        EXPECT_TRUE(text->text.startsWith(QStringView(c.start)));
        EXPECT_LE(text->text.size(), (1 << 20) + 300);
        EXPECT_FALSE(text->text.endsWith(QChar(0xc3)));
        EXPECT_EQ(text->whole, c.whole);
    }
    w.file("lines.txt", QByteArray(1 << 20, '\n'));
    const auto lines = PreviewFiles::readText(w.path("lines.txt"));
    EXPECT_LE(lines->text.count(u'\n'), 50'000);
    EXPECT_FALSE(lines->whole);
    w.file("binary", QByteArray("a\0b", 3));
    ASSERT_EQ(mkfifo(w.path("pipe.txt").constData(), 0600), 0);
    for (const char *name : { "binary", "pipe.txt", "missing.txt", "." })
        EXPECT_FALSE(PreviewFiles::readText(w.path(name))) << name;
}

TEST(PreviewTest, WhatCannotBeShownShowsAsACard)
{
    PreviewWorld w;
    ASSERT_EQ(mkfifo(w.path("pipe.txt").constData(), 0600), 0);
    w.file("here.webloc",
           "<plist version=\"1.0\"><dict><key>URL</key>"
           "<string>https://example.org/a</string></dict></plist>");
    w.file("link.webloc", "nothing of the kind");
    for (const char *name : { "broken.png", "broken.pdf", "broken.zip", "letters.ttf" })
        w.file(name);
    w.file("empty.png", "");
    w.file("empty.txt", "");
    const QByteArray longName(250, 'w'); // The window must not grow with it.
    w.file(longName, QByteArray(3000, '\0'));
    const struct
    {
        QByteArray name;
        std::optional<Kind> asks;
        const char *line; // None: the name in the page as well as in the header.
        const char *title = "";
    } cases[] = {
        { "gone.txt", {}, "preview_gone" },
        { "gone/", {}, "preview_gone" },
        { "pipe.txt", {}, nullptr },
        { "broken.png", Kind::Image, nullptr },
        { "broken.pdf", Kind::Page, nullptr },
        { "broken.zip", Kind::Archive, nullptr },
        { "letters.ttf", {}, nullptr },
        { "empty.png", Kind::Image, "preview_empty · " },
        { "empty.txt", {}, "preview_empty" },
        { "here.webloc", {}, "https://example.org/a" },
        { "link.webloc", {}, nullptr, "example.org/title" },
        { longName, {}, "3.0 kB" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name.constData());
        const QUrl url = FilePath::toUrl(w.path(c.name),
                                         c.name.endsWith('/') ? FilePath::Kind::Directory
                                                              : FilePath::Kind::File);
        w.open({ { url }, 0, { { url, QLatin1String(c.title) } } });
        if (c.asks == Kind::Archive)
            w.last(Kind::Archive).listing(std::nullopt);
        else if (c.asks)
            w.answer(std::nullopt, *c.asks);
        w.queue.settle();
        const QString start = QString::fromUtf8(c.line         ? c.line
                                                    : *c.title ? c.title
                                                               : c.name.constData());
        const auto says = [&](const auto *label) {
            return label->isVisible() && label->text().startsWith(start);
        };
        EXPECT_EQ(std::ranges::count_if(w.window.findChildren<QLabel *>(), says), c.line ? 1 : 2);
        EXPECT_LT(w.window.width(), 800);
        w.key(Qt::Key_Escape);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST(PreviewTest, TextIsSelectedAndCopiedByKeyboard)
{
    PreviewWorld w;
    for (const char *name : { "words.txt", "card.ttf" }) {
        SCOPED_TRACE(name);
        w.open({ w.file(name, "words") });
        QApplication::setActiveWindow(&w.window);
        w.key(Qt::Key_Tab); // To the window's button.
        w.key(Qt::Key_Tab);
        QTest::keyClick(w.window.focusWidget(), Qt::Key_Home);
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(w.window.focusWidget(), Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyClick(w.window.focusWidget(), Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QGuiApplication::clipboard()->text(), QLatin1String(name).left(3));
        QTest::keyClick(w.window.focusWidget(), Qt::Key_Space);
        EXPECT_FALSE(w.window.isVisible()) << "the other keys are the window's still";
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
    EXPECT_TRUE(w.says(u"0:00 / 1:02:03"_s));

    w.key(Qt::Key_Tab);
    w.key(Qt::Key_Tab); // Past the window's own button.
    const auto *button = dynamic_cast<QAbstractButton *>(w.window.focusWidget());
    ASSERT_TRUE(button && button->accessibleName() == u"preview_play"_s);
    QTest::keyClick(w.window.focusWidget(), Qt::Key_Space);
    w.player->onState({ true, 60, 3723 });
    EXPECT_EQ(button->accessibleName(), u"preview_pause"_s);
    auto *slider = w.window.findChild<QSlider *>();
    EXPECT_EQ(slider->value(), 60'000);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(slider, Qt::Key_Right);
    w.player->onState({ true, 60.2, 3723 });
    EXPECT_EQ(slider->value(), 75'000) << "moved back under the user's hand";
    w.queue.advance(1);
    w.player->onState({ false, 3723, 3723 });
    EXPECT_EQ(button->accessibleName(), u"preview_play"_s);
    EXPECT_EQ(w.told, (QStringList { u"play"_s, u"seek 75"_s }));

    // From the button the arrows walk; what it played is over then, and the focus not elsewhere.
    QTest::keyClick(w.window.focusWidget(), Qt::Key_Down);
    w.player->onOpened({});
    w.queue.settle();
    EXPECT_EQ(w.window.focusWidget(), &w.window);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(w.told.last(), u"gone"_s);
    const auto fail = w.player->onFailed;
    fail();
    w.queue.settle();
    EXPECT_FALSE(w.window.findChild<QSlider *>()->isVisible());
    w.player = nullptr;
    w.key(Qt::Key_Down); // Names places that nobody is to go to by looking at it.
    EXPECT_EQ(w.player, nullptr);
}
