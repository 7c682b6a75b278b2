#pragma once

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "base/QtMainQueue.h"
#include "platform/linux/pictures/DecoderPool.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <optional>

/// A queue whose pauses are shorter, so that limits are over soon.
class HastyQueue final : public MainQueue
{
public:
    double haste = 1;

    double uptime() const override { return m_queue.uptime(); }
    double now() const override { return m_queue.now(); }
    void post(std::function<void()> task) override { m_queue.post(std::move(task)); }
    [[nodiscard]] Ticket after(double seconds, std::function<void()> task, Precision how) override
    {
        return m_queue.after(seconds / haste, std::move(task), how);
    }
    [[nodiscard]] Ticket every(double seconds, std::function<void()> task, Precision how) override
    {
        return m_queue.every(seconds, std::move(task), how);
    }

private:
    QtMainQueue m_queue;
};

/// Files in a folder of the test, and the real decoder.
class PictureWorld
{
public:
    using Picture = PictureDecoder::Picture;

    QByteArray path(const QByteArray &name) const { return m_folder.path().toUtf8() + '/' + name; }
    QByteArray write(const QByteArray &name, const QByteArray &bytes) const
    {
        NativeFile::remove(path(name));
        EXPECT_TRUE(NativeFile::writeNew(path(name), bytes));
        return path(name);
    }
    /// In the format that the name tells.
    QByteArray save(const QByteArray &name, const QImage &image) const
    {
        EXPECT_TRUE(image.save(QFile::decodeName(path(name)), nullptr, 95));
        return path(name);
    }
    /// Each page is of one colour, half as wide as high, with a word on it.
    QByteArray savePdf(const QByteArray &name, const QList<QColor> &pages) const
    {
        QPdfWriter writer(QFile::decodeName(path(name)));
        writer.setPageSize(QPageSize(QSizeF(300, 600), QPageSize::Point));
        writer.setPageMargins({});
        QPainter painter(&writer);
        for (const QColor &colour : pages) {
            if (colour != pages.first())
                writer.newPage();
            painter.fillRect(QRect(0, 0, writer.width(), writer.height()), colour);
            painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 60));
            painter.drawText(writer.width() / 8, writer.height() / 3, QStringLiteral("word"));
        }
        return path(name);
    }
    static QByteArray sample(const QByteArray &name)
    {
        return QByteArray(VANTLE_SOURCE_DIR "/tests/pictures/") + name;
    }
    static QByteArray read(const QByteArray &path)
    {
        return NativeFile::read(path).bytes.value_or(QByteArray());
    }

    bool waitFor(const std::function<bool()> &condition, double timeout = 15)
    {
        const double end = queue.uptime() + timeout;
        while (!condition() && queue.uptime() < end)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return condition();
    }
    /// Asks and waits for the answer, which has to come, and once.
    template<typename T>
    std::optional<T> answer(const std::function<Ticket(PictureDecoder::Answer<T>)> &ask)
    {
        int answers = 0;
        std::optional<T> result;
        const Ticket ticket = ask([&](std::optional<T> given) {
            ++answers;
            result = std::move(given);
        });
        EXPECT_TRUE(waitFor([&] { return answers > 0; })) << "no answer";
        QCoreApplication::processEvents();
        EXPECT_EQ(answers, 1);
        return result;
    }
    std::optional<Picture> image(const QByteArray &file, int maxPixel)
    {
        return answer<Picture>([&](auto given) {
            return decoder.image(FilePath::toUrl(file), maxPixel, PictureDecoder::Urgency::Row,
                                 given);
        });
    }
    std::optional<Picture> page(const QByteArray &file, int number, int maxPixel)
    {
        return answer<Picture>([&](auto given) {
            return decoder.page(FilePath::toUrl(file), number, maxPixel,
                                PictureDecoder::Urgency::Preview, given);
        });
    }
    std::optional<QList<PictureDecoder::Frame>> frames(const QByteArray &file, int first)
    {
        return answer<QList<PictureDecoder::Frame>>(
            [&](auto given) { return decoder.frames(FilePath::toUrl(file), first, 20, given); });
    }
    std::optional<PictureDecoder::Listing> archive(const QByteArray &file)
    {
        return answer<PictureDecoder::Listing>(
            [&](auto given) { return decoder.archive(FilePath::toUrl(file), given); });
    }
    std::optional<QByteArray> version(const QByteArray &file)
    {
        return answer<QByteArray>(
            [&](auto given) { return decoder.version(FilePath::toUrl(file), given); });
    }

private:
    QTemporaryDir m_folder;

public:
    HastyQueue queue;
    FileLanes lanes;
    DecoderPool decoder { QStringLiteral(VANTLE_BINARY_DIR "/bin/vantle-decoder"), lanes, queue };
};

/// Those that run with that command line, or one that ends in it.
inline QList<pid_t> processes(const QByteArray &commandLine)
{
    QList<pid_t> found;
    for (const QString &name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile file(QStringLiteral("/proc/%1/cmdline").arg(name));
        if (name.toInt() > 0 && file.open(QIODevice::ReadOnly)
            && file.readAll().replace('\0', ' ').trimmed().endsWith(commandLine))
            found.append(name.toInt());
    }
    return found;
}

/// Colours survive a format's losses by and large.
inline testing::AssertionResult isNear(const QColor &seen, const QColor &wanted)
{
    const int off = std::max(
        { std::abs(seen.red() - wanted.red()), std::abs(seen.green() - wanted.green()),
          std::abs(seen.blue() - wanted.blue()), std::abs(seen.alpha() - wanted.alpha()) });
    if (off <= 12)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << qPrintable(seen.name(QColor::HexArgb)) << ", not "
                                       << qPrintable(wanted.name(QColor::HexArgb));
}
