#include "gallery/PictureDifference.h"

#include <QPainter>
#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <functional>

namespace {

/// Something like the panel with three rows, one of them marked.
struct Panel
{
    int shift = 0; // Of the second row, in pixels.
    QColor mark { 0xd5, 0xdb, 0xe3 };
    QColor icon { 0x3d, 0xae, 0xe9 };
    QString name = QStringLiteral("Holiday.jpg");

    QImage paint() const
    {
        QImage image(262, 342, QImage::Format_RGB32);
        image.fill(QColor(0xf1, 0xf1, 0xf3));
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        for (int row = 0; row < 3; ++row) {
            const int top = 40 + 44 * row + (row == 1 ? shift : 0);
            painter.setPen(Qt::NoPen);
            if (row == 2) {
                painter.setBrush(mark);
                painter.drawRoundedRect(8, top, 246, 40, 8, 8);
            }
            painter.setBrush(icon);
            painter.drawEllipse(16, top + 6, 28, 28);
            painter.setPen(Qt::black);
            painter.drawText(54, top + 18, row == 1 ? name : QStringLiteral("Annual report.pdf"));
            painter.setPen(QColor(0x60, 0x60, 0x66));
            painter.drawText(54, top + 34, QStringLiteral("/home/ada/Documents"));
        }
        return image;
    }
};

/// Changes every pixel that differs from its neighbour, as another smoothing of
/// letters and curves would.
QImage withOtherEdges(const QImage &image)
{
    QRandomGenerator random(1);
    QImage result = image;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 1; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color == image.pixelColor(x - 1, y))
                continue;
            const int by = random.bounded(-8, 9);
            const auto shifted = [by](int value) { return std::clamp(value + by, 0, 255); };
            result.setPixelColor(
                x, y, { shifted(color.red()), shifted(color.green()), shifted(color.blue()) });
        }
    }
    return result;
}

}

TEST(PictureDifferenceTest, TellsWhatIsSeenFromTheGrainOfEdges)
{
    const Panel usual;
    const QImage stored = usual.paint();
    struct Case
    {
        const char *what;
        QImage now;
        bool small;
    };
    const Case cases[] = {
        { "the same", stored, true },
        { "other smoothing of edges", withOtherEdges(stored), true },
        { "a row shifted by one pixel", Panel { .shift = 1 }.paint(), false },
        { "a mark that is gone", Panel { .mark = QColor(0xf1, 0xf1, 0xf3) }.paint(), false },
        { "one letter of a name", Panel { .name = QStringLiteral("Holiday.jpe") }.paint(), false },
        { "another size", stored.copy(0, 0, 262, 341), false },
        { "no picture", {}, false },
    };
    for (const Case &c : cases) {
        const PictureDifference difference(stored, c.now);
        EXPECT_EQ(difference.isSmall(), c.small)
            << c.what << ": mean " << difference.mean << ", clear " << difference.clear;
    }
}
