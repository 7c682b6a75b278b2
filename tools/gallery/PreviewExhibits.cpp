#include "gallery/Exhibit.h"
#include "gallery/Stage.h"

#include "base/FilePath.h"
#include "platform/fake/FakePictureDecoder.h"
#include "store/QuickLookController.h"
#include "views/preview/PreviewCache.h"
#include "views/preview/PreviewWindow.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPainter>

namespace {

enum class Subject { Picture, Text, Code, Document, Folder, Archive, Link, Other };

struct File
{
    const char *name;
    const char *content;
};

File fileOf(Subject subject)
{
    switch (subject) {
    case Subject::Picture:
        return { "Lisbon.jpg", "" };
    case Subject::Text:
        return { "Notes.txt",
                 "Remember to ask about the train tickets.\n\nThe second line is so long that it "
                 "has to break somewhere before it reaches the other side of the window, at "
                 "least once.\n" };
    case Subject::Code:
        return { "hello.c", "#include <stdio.h>\n\nint main(void)\n{\n    puts(\"Hello\");\n}\n" };
    case Subject::Document:
        return { "Annual report 2023.pdf", "" };
    case Subject::Folder:
        return { "website", nullptr };
    case Subject::Archive:
        return { "backup-2024-05-01.tar.gz", "" };
    case Subject::Link:
        return { "Debian.webloc",
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                 "<key>URL</key><string>https://www.debian.org/releases/stable/</string>"
                 "</dict></plist>\n" };
    case Subject::Other:
        break;
    }
    return { "firmware with a name that hardly ends.bin", "" };
}

/// A page or a photograph, as far as one has to tell them apart.
QImage drawn(Subject subject, const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(subject == Subject::Document ? QColor(Qt::white) : QColor(0x5b, 0x8d, 0xd6));
    QPainter painter(&image);
    if (subject == Subject::Document) {
        for (int line = 1; line < 12; ++line)
            painter.fillRect(size.width() / 8, size.height() * line / 13,
                             size.width() * (line % 4 == 0 ? 2 : 6) / 8, size.height() / 60 + 1,
                             QColor(0x55, 0x55, 0x5a));
    } else {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x3f, 0x5e, 0x4e));
        painter.drawEllipse(QPoint(size.width() / 2, size.height()), size.width() * 2 / 3,
                            size.height() / 2);
    }
    return image;
}

class PreviewExhibit final : public Exhibit
{
public:
    PreviewExhibit(const Surroundings &surroundings, Subject subject)
        : m_stage(surroundings)
        , m_subject(subject)
        , m_cache(m_decoder, m_stage.queue)
        , m_window(
              m_ql,
              { m_decoder, m_cache, m_stage.workers, m_stage.queue, m_stage.icons, m_stage.texts })
    {
        // The second of two, so that the window tells its place.
        m_ql = { { QUrl(QStringLiteral("file:///home/ada/other.bin")), make() }, 1, {} };
        m_window.setMotion(Motion::Reduced);
        m_window.bringToFront = [](QWidget &window) {
            window.setAttribute(Qt::WA_DontShowOnScreen);
            window.show();
        };
        m_window.open(QRect(500, 100, 240, 320));
        settle();
    }

    QWidget &widget() override { return m_window; }

private:
    QUrl make() const
    {
        const File file = fileOf(m_subject);
        const QString path = m_folder.filePath(QLatin1String(file.name));
        if (!file.content) {
            for (const char *name : { "index.html", "style.css", "pictures.zip" })
                write(path + u'/' + QLatin1String(name), QByteArray(1500, 'x'));
            return FilePath::toUrl(QFile::encodeName(path), FilePath::Kind::Directory);
        }
        // A text holds no zeros.
        write(path,
              m_subject == Subject::Other ? QByteArray(2500, '\0') : QByteArray(file.content));
        return FilePath::toUrl(QFile::encodeName(path));
    }

    /// As of the first of May 2024.
    static void write(const QString &path, const QByteArray &content)
    {
        QDir().mkpath(path.left(path.lastIndexOf(u'/')));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("Cannot write %s", qPrintable(path));
        file.write(content);
        file.flush();
        file.setFileTime(QDateTime(QDate(2024, 5, 1), QTime(9, 41), Qt::UTC),
                         QFileDevice::FileModificationTime);
    }

    /// Answers ask for more, at most in a few steps.
    void settle()
    {
        for (int step = 0; step < 6; ++step) {
            m_stage.queue.advance(0.5);
            for (const auto &request : std::exchange(m_decoder.requests, {}))
                answer(request);
            QApplication::processEvents();
        }
    }

    void answer(const FakePictureDecoder::Request &request) const
    {
        const QSize whole = m_subject == Subject::Document ? QSize(420, 594) : QSize(640, 480);
        const auto most = std::max(request.maxPixel, 1);
        const QSize size = whole.scaled(most, most, Qt::KeepAspectRatio)
                               .boundedTo(request.number > 0 || most > 1 ? whole * 2 : whole);
        if (request.picture)
            request.picture(PictureDecoder::Picture {
                drawn(m_subject, size), whole, m_subject == Subject::Document ? 3 : 1, "1" });
        if (request.version)
            request.version(QByteArray("1"));
        if (request.listing)
            request.listing(PictureDecoder::Listing {
                { { QStringLiteral("home/ada/Documents/Annual report 2023.pdf"), 214000, false },
                  { QStringLiteral("home/ada/Pictures"), 0, true },
                  { QStringLiteral("home/ada/Pictures/Lisbon.jpg"), 5300000, false } },
                false });
    }

    Stage m_stage;
    Subject m_subject;
    QTemporaryDir m_folder;
    FakePictureDecoder m_decoder;
    PreviewCache m_cache;
    QuickLookController m_ql;
    PreviewWindow m_window;
};

}

std::vector<ExhibitEntry> previewExhibits()
{
    const std::pair<const char *, Subject> subjects[] = {
        { "picture", Subject::Picture }, { "text", Subject::Text },
        { "code", Subject::Code },       { "document", Subject::Document },
        { "folder", Subject::Folder },   { "archive", Subject::Archive },
        { "link", Subject::Link },       { "other", Subject::Other },
    };
    std::vector<ExhibitEntry> result;
    for (const auto &[name, subject] : subjects) {
        result.push_back({ QStringLiteral("preview-") + QLatin1String(name),
                           ExhibitEntry::Frame::Window,
                           [which = subject](const Surroundings &surroundings) {
                               return std::make_unique<PreviewExhibit>(surroundings, which);
                           } });
    }
    return result;
}
