#include "gallery/PictureDifference.h"

#include <QPainter>
#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <functional>

namespace {

/// Something like the panel with three rows, one of them marked.
QImage panel(int shift = 0, const QColor &mark = QColor(0xd5, 0xdb, 0xe3),
             const QString &name = QStringLiteral("Holiday.jpg"))
{
    QImage image(262, 342, QImage::Format_RGB32);
    image.fill(QColor(0xf1, 0xf1, 0xf3));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(8, 128, 246, 40, mark);
    for (int row = 0; row < 3; ++row) {
        const int top = 40 + 44 * row + (row == 1 ? shift : 0);
        painter.setBrush(QColor(0x3d, 0xae, 0xe9));
        painter.drawEllipse(16, top + 6, 28, 28);
        painter.drawText(54, top + 18, row == 1 ? name : QStringLiteral("Annual report.pdf"));
    }
    return image;
}

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
    const QImage stored = panel();
    const std::tuple<const char *, QImage, bool> cases[] = {
        { "the same", stored, true },
        { "other smoothing of edges", withOtherEdges(stored), true },
        { "a row shifted by one pixel", panel(1), false },
        { "a mark that is gone", panel(0, QColor(0xf1, 0xf1, 0xf3)), false },
        { "one letter of a name", panel(0, QColor(0xd5, 0xdb, 0xe3), QStringLiteral("Holiday.jpe")),
          false },
        { "another size", stored.copy(0, 0, 262, 341), false },
        { "no picture", {}, false },
    };
    for (const auto &[what, now, small] : cases) {
        const PictureDifference difference(stored, now);
        EXPECT_EQ(difference.isSmall(), small)
            << what << ": mean " << difference.mean << ", clear " << difference.clear;
    }
}
