#include "gallery/PictureDifference.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

struct Lab
{
    float l = 0;
    float a = 0;
    float b = 0;
};

std::array<float, 256> linearTable()
{
    std::array<float, 256> table {};
    for (int i = 0; i < 256; ++i) {
        const double s = i / 255.0;
        table[static_cast<size_t>(i)]
            = static_cast<float>(s <= 0.04045 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4));
    }
    return table;
}

float curve(float t)
{
    return t > 0.008856F ? std::cbrt(t) : 7.787F * t + 16.0F / 116;
}

/// From sRGB, with the white point D65.
Lab labOf(QRgb pixel)
{
    static const auto linear = linearTable();
    const float r = linear[static_cast<size_t>(qRed(pixel))];
    const float g = linear[static_cast<size_t>(qGreen(pixel))];
    const float b = linear[static_cast<size_t>(qBlue(pixel))];
    const float x = curve((0.4124F * r + 0.3576F * g + 0.1805F * b) / 0.95047F);
    const float y = curve(0.2126F * r + 0.7152F * g + 0.0722F * b);
    const float z = curve((0.0193F * r + 0.1192F * g + 0.9505F * b) / 1.08883F);
    return { 116 * y - 16, 500 * (x - y), 200 * (y - z) };
}

/// Over its window's ground, where it is transparent.
std::vector<Lab> labsOf(const QImage &picture)
{
    const QImage image = picture.convertToFormat(QImage::Format_RGB32);
    std::vector<Lab> result;
    result.reserve(static_cast<size_t>(image.width()) * static_cast<size_t>(image.height()));
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        std::transform(line, line + image.width(), std::back_inserter(result), labOf);
    }
    return result;
}

/// The mean of three pixels by three.
Lab blurred(const std::vector<Lab> &labs, const QSize &size, int x, int y)
{
    Lab sum;
    float count = 0;
    for (int row = std::max(0, y - 1); row <= std::min(size.height() - 1, y + 1); ++row) {
        for (int column = std::max(0, x - 1); column <= std::min(size.width() - 1, x + 1);
             ++column) {
            const Lab &lab = labs[static_cast<size_t>(row) * static_cast<size_t>(size.width())
                                  + static_cast<size_t>(column)];
            sum = { sum.l + lab.l, sum.a + lab.a, sum.b + lab.b };
            ++count;
        }
    }
    return { sum.l / count, sum.a / count, sum.b / count };
}

}

PictureDifference::PictureDifference(const QImage &one, const QImage &other)
{
    if (one.size() != other.size() || one.isNull())
        return;
    const QSize size = one.size();
    const auto ours = labsOf(one);
    const auto theirs = labsOf(other);
    map = QImage(size, QImage::Format_Grayscale8);
    double sum = 0;
    double far = 0;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const Lab a = blurred(ours, size, x, y);
            const Lab b = blurred(theirs, size, x, y);
            const double distance = std::hypot(a.l - b.l, a.a - b.a, a.b - b.b);
            sum += distance;
            far += distance > clearDistance ? 1 : 0;
            map.scanLine(y)[x]
                = static_cast<uchar>(255 - std::min(255, static_cast<int>(distance * 12)));
        }
    }
    const double pixels = static_cast<double>(size.width()) * size.height();
    mean = sum / pixels;
    clear = far / pixels;
}
