// Scrolls a shelf of 100,000 pictures, in a window on the X server, while their thumbnails arrive.
// A frame is due every sixtieth of a second: how late each is painted, and how far the memory
// grows.
//   bench_scroll DECODER PIXELS
// PIXELS are scrolled each frame; a row is 49 high.
#include "StoreHome.h"

#include "app/settings/AppSettings.h"
#include "base/QtMainQueue.h"
#include "fileops/ThumbnailLoader.h"
#include "platform/fake/FakeAutostart.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakePreferences.h"
#include "platform/linux/files/FileLanes.h"
#include "platform/linux/pictures/DecoderPool.h"
#include "platform/linux/pictures/DesktopThumbnails.h"
#include "platform/linux/session/ThemeIcons.h"
#include "platform/linux/x11/XSettings.h"
#include "store/QuickLookController.h"
#include "views/shelf/ShelfView.h"

#include <QApplication>
#include <QFile>
#include <QListView>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>
#include <malloc.h>

namespace {

constexpr int entries = 100'000;
constexpr int pictures = 200; // Files; every entry is a link to one of them.
constexpr int frames = 3000;
constexpr double frameTime = 1 / 60.0; // Seconds.

/// Counts what its decoder answers.
class CountingDecoder final : public PictureDecoder
{
public:
    int arrived = 0;

    explicit CountingDecoder(PictureDecoder &decoder)
        : m_decoder(decoder)
    {
    }
    Ticket version(const QUrl &url, Answer<QByteArray> answer) override
    {
        return m_decoder.version(url, std::move(answer));
    }
    Ticket image(const QUrl &url, int maxPixel, Urgency urgency, Answer<Picture> answer) override
    {
        return m_decoder.image(url, maxPixel, urgency,
                               [this, answer = std::move(answer)](std::optional<Picture> picture) {
                                   arrived += picture ? 1 : 0;
                                   answer(std::move(picture));
                               });
    }
    Ticket imageFromData(const QByteArray &, Answer<Picture>) override { return {}; }
    Ticket page(const QUrl &, int, int, Urgency, Answer<Picture>) override { return {}; }
    Ticket frames(const QUrl &, int, int, Answer<QList<Frame>>) override { return {}; }
    Ticket archive(const QUrl &, Answer<Listing>) override { return {}; }

private:
    PictureDecoder &m_decoder;
};

double residentMegabytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const QByteArray line = text.mid(text.indexOf("VmRSS:") + 6);
    return line.left(line.indexOf("kB")).trimmed().toDouble() / 1024;
}

/// Photographs of a megapixel under 100,000 names.
QList<QUrl> makePictures(const QByteArray &folder)
{
    for (int i = 0; i < pictures; ++i) {
        QImage image(1200, 800, QImage::Format_RGB32);
        QPainter painter(&image);
        QLinearGradient sky(0, 0, 1200, 800);
        sky.setColorAt(0, QColor::fromHsv(i * 359 / pictures, 200, 220));
        sky.setColorAt(1, QColor::fromHsv((i * 97) % 360, 160, 90));
        painter.fillRect(image.rect(), sky);
        for (int spot = 0; spot < 400; ++spot)
            painter.fillRect((spot * 7919 + i * 31) % 1200, (spot * 104729 + i) % 800, 9, 9,
                             QColor::fromHsv((spot * 13) % 360, 255, 200));
        painter.end();
        image.save(QString::fromUtf8(folder) + QStringLiteral("/%1.jpg").arg(i), "JPG", 88);
    }
    QList<QUrl> urls;
    for (int i = 0; i < entries; ++i) {
        const QByteArray original = folder + '/' + QByteArray::number(i % pictures) + ".jpg";
        const QByteArray name = folder + "/photograph " + QByteArray::number(i) + ".jpg";
        if (::link(original.constData(), name.constData()) != 0)
            std::perror("link");
        urls.append(FilePath::toUrl(name));
    }
    return urls;
}

}

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    if (argc < 3)
        return 2;
    const QString resources
        = QApplication::applicationDirPath() + QStringLiteral("/../share/vantle");
    StoreHome home;
    QtMainQueue queue;
    const auto store = home.newStore();
    FakePreferences preferences;
    FakeAutostart autostart;
    Localizer texts { QString(), {} };
    AppSettings settings(preferences, autostart, texts, {});
    QuickLookController ql;
    ThemeIcons icons(resources + QStringLiteral("/icons"), XSettings::read);
    FakeDragSession session;
    FileLanes lanes;
    DecoderPool pool(QFile::decodeName(argv[1]), lanes, queue);
    CountingDecoder decoder(pool);
    DesktopThumbnails generator({ home.path() + "/thumbnails", {}, {} }, decoder, lanes, queue);
    Thumbnails thumbnails(decoder, generator);
    store->add(makePictures(home.path()));

    ShelfView view(*store, settings, texts, ql, icons, session, queue, resources);
    view.setThumbnails(thumbnails);
    view.resize(238, 318);
    view.show();
    auto *list = view.findChild<QListView *>();
    const double start = seconds(CLOCK_MONOTONIC);
    while (seconds(CLOCK_MONOTONIC) < start + 1)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    ::malloc_trim(0); // What making the shelf took is not room for pictures.
    const double before = residentMegabytes();

    std::vector<double> times; // Milliseconds from when a frame was due to when it was painted.
    double largest = before; // Megabytes.
    QTimer clock; // Wakes the loop in time.
    clock.setTimerType(Qt::PreciseTimer);
    clock.start(1);
    double due = seconds(CLOCK_MONOTONIC);
    QScrollBar *bar = list->verticalScrollBar();
    for (int frame = 0; frame < frames; ++frame) {
        due += frameTime;
        while (seconds(CLOCK_MONOTONIC) < due)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        bar->setValue(bar->value() + std::atoi(argv[2]));
        list->viewport()->repaint();
        const double end = seconds(CLOCK_MONOTONIC);
        times.push_back((end - due) * 1000);
        due = std::max(due, end - frameTime); // A frame that was late is counted once.
        if (frame % 100 == 0)
            largest = std::max(largest, residentMegabytes());
    }
    std::printf("frames %d\nthumbnails %d\n", frames, decoder.arrived);
    for (const auto &[name, share] :
         { std::pair("median", 0.5), { "99th", 0.99 }, { "worst", 1.0 } })
        std::printf("%s %.2f\n", name, quantile(times, share));
    std::printf("memory_before %.1f\nmemory_largest %.1f\n", before, largest);
    return 0;
}
