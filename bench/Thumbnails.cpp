// Thumbnails of 200 photographs of 12 to 24 megapixels, beside one vipsthumbnail process over the
// same files to the same edge, taking turns. Our decoders are started within the time.
//   bench_thumbnails DECODER FOLDER ROUNDS
// The photographs are made in the folder, if they are not there, and stay there.
#include "StoreHome.h"

#include "base/QtMainQueue.h"
#include "platform/linux/pictures/DecoderPool.h"

#include <QCoreApplication>
#include <QImage>
#include <QProcess>

#include <cmath>
#include <random>

namespace {

constexpr int count = 200;
constexpr int edge = 64; // Pixels: a row at two pixels a point.

/// As much detail as photographs have, so that decoding costs what theirs costs.
void makePhotograph(const QByteArray &path, int number)
{
    std::minstd_rand random(static_cast<unsigned>(number + 1));
    const double megapixels = 12 + 12.0 * number / (count - 1);
    const int width = static_cast<int>(std::sqrt(megapixels * 1e6 * 3 / 2));
    QImage image(width, width * 2 / 3, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int wave = static_cast<int>(60 * std::sin((x + number * 40) / 90.0)
                                              + 40 * std::cos(y / 37.0));
            const int noise = static_cast<int>(random() >> 24) % 24;
            line[x] = qRgb(std::clamp(120 + wave + noise, 0, 255),
                           std::clamp(110 + wave / 2 + noise, 0, 255),
                           std::clamp(90 - wave + noise, 0, 255));
        }
    }
    image.save(QFile::decodeName(path), "JPG", 85);
}

QByteArrayList photographs(const QByteArray &folder)
{
    NativeFile::makeFolder(folder);
    QByteArrayList paths;
    for (int i = 0; i < count; ++i) {
        const QByteArray path = folder + "/photograph " + QByteArray::number(i) + ".jpg";
        if (::access(path.constData(), R_OK) != 0)
            makePhotograph(path, i);
        paths.append(path);
    }
    return paths;
}

/// Seconds for all of them.
double ours(const QString &program, const QByteArrayList &paths)
{
    QtMainQueue queue;
    FileLanes lanes;
    DecoderPool pool(program, lanes, queue);
    std::vector<Ticket> tickets;
    int answers = 0;
    const double start = seconds(CLOCK_MONOTONIC);
    for (const QByteArray &path : paths)
        tickets.push_back(pool.image(
            FilePath::toUrl(path), edge, PictureDecoder::Urgency::Row,
            [&](const std::optional<PictureDecoder::Picture> &picture) {
                if (!picture || std::max(picture->image.width(), picture->image.height()) != edge)
                    std::fputs("A photograph was not decoded.\n", stderr);
                if (++answers == count)
                    QCoreApplication::exit();
            }));
    QCoreApplication::exec();
    return seconds(CLOCK_MONOTONIC) - start;
}

double theirs(const QByteArrayList &paths, const QString &output)
{
    QStringList arguments { QStringLiteral("--size"), QStringLiteral("%1x%1").arg(edge),
                            QStringLiteral("-o"), output + QStringLiteral("/%s.png") };
    for (const QByteArray &path : paths)
        arguments.append(QFile::decodeName(path));
    const double start = seconds(CLOCK_MONOTONIC);
    if (QProcess::execute(QStringLiteral("vipsthumbnail"), arguments) != 0)
        std::fputs("vipsthumbnail failed.\n", stderr);
    return seconds(CLOCK_MONOTONIC) - start;
}

}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc < 4)
        return 2;
    const QByteArrayList paths = photographs(argv[2]);
    const QTemporaryDir output;
    std::vector<double> our;
    std::vector<double> their;
    std::vector<double> ratios;
    for (int round = std::atoi(argv[3]); round >= 0; --round) {
        const double we = ours(QFile::decodeName(argv[1]), paths);
        const double they = theirs(paths, output.path());
        if (round == std::atoi(argv[3]))
            continue; // Brought the files into the kernel's cache.
        our.push_back(we * 1000);
        their.push_back(they * 1000);
        ratios.push_back(we / they);
    }
    std::printf("ours %.0f\nvipsthumbnail %.0f\nratio %.3f\n", quantile(our, 0.5),
                quantile(their, 0.5), quantile(ratios, 0.5));
    return 0;
}
