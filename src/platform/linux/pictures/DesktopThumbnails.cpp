#include "platform/linux/pictures/DesktopThumbnails.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "platform/linux/files/FileLanes.h"
#include "platform/linux/pictures/HelperProcess.h"

#include <QMimeDatabase>

#include <algorithm>
#include <utility>

namespace {

/// By the name alone.
QMimeType typeOf(const QByteArray &path)
{
    return QMimeDatabase().mimeTypeForFile(FilePath::display(FilePath::lastComponent(path)),
                                           QMimeDatabase::MatchExtension);
}

QImage fitted(const QImage &image, int edge)
{
    if (std::max(image.width(), image.height()) <= edge)
        return image;
    return image.scaled(edge, edge, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

}

/// One request. Its owner holds it by the ticket.
struct DesktopThumbnails::Work
{
    QByteArray path;
    int wanted = 0; // Pixels.
    Update update;

    bool remote = false;
    std::optional<ThumbnailSubject> subject {};
    std::optional<ThumbnailFiles::Found> cached {};
    bool hasFailed = false;
    bool isDocument = false;
    std::optional<QByteArrayList> command {};
    QImage image {}; // As it is shown.
    Ticket step {}; // What is being waited for.
};

DesktopThumbnails::Places DesktopThumbnails::placesOf(const Directories &directories)
{
    Places places;
    const QByteArray cache = qgetenv("XDG_CACHE_HOME");
    places.cache = (cache.startsWith('/') ? cache : directories.home + "/.cache") + "/thumbnails";
    places.data.append(directories.data);
    const QByteArray shared = qgetenv("XDG_DATA_DIRS");
    for (const QByteArray &folder :
         (shared.isEmpty() ? QByteArray("/usr/local/share:/usr/share") : shared).split(':')) {
        if (folder.startsWith('/'))
            places.data.append(folder);
    }
    places.confined = HelperProcess::installedProgram(QStringLiteral("vantle-confined"));
    return places;
}

DesktopThumbnails::DesktopThumbnails(Places places, PictureDecoder &decoder, FileLanes &lanes,
                                     MainQueue &queue)
    : m_files(std::make_shared<ThumbnailFiles>(std::move(places.cache)))
    , m_thumbnailers(
          std::make_shared<Thumbnailers>(std::move(places.data), std::move(places.confined), queue))
    , m_decoder(decoder)
    , m_lanes(lanes)
    , m_queue(queue)
{
}

DesktopThumbnails::~DesktopThumbnails() = default;

Ticket DesktopThumbnails::generate(const QUrl &url, double size, double scale, Update update)
{
    const QByteArray path = FilePath::fromUrl(url);
    auto work
        = std::make_shared<Work>(Work { path, static_cast<int>(size * scale), std::move(update) });
    work->remote = m_lanes.isRemote(path);
    onLane(
        work,
        [files = m_files, thumbnailers = m_thumbnailers](Work &looked) {
            looked.subject = files->subject(looked.path);
            if (!looked.subject)
                return;
            looked.cached = files->find(*looked.subject, looked.wanted);
            looked.hasFailed = !looked.cached && files->hasFailed(*looked.subject);
            if (looked.cached || looked.hasFailed)
                return;
            const QMimeType type = typeOf(looked.path);
            looked.isDocument = type.inherits(QStringLiteral("application/pdf"));
            QByteArrayList names { type.name().toUtf8() };
            for (const QString &alias : type.aliases())
                names.append(alias.toUtf8());
            // A program that hangs on a server's file could not even be ended.
            if (!looked.isDocument && !looked.remote)
                looked.command = thumbnailers->commandFor(names);
        },
        &DesktopThumbnails::choose);
    return work;
}

/// Looks at files on a thread of theirs, and goes on here unless the request was
/// dropped meanwhile. The thread works on a copy: it may hang for good.
void DesktopThumbnails::onLane(const WorkPointer &work, std::function<void(Work &)> look,
                               void (DesktopThumbnails::*then)(const WorkPointer &))
{
    Work copy = *work;
    copy.update = nullptr;
    copy.step.reset();
    m_lanes.run(work->path,
                [this, copy, look = std::move(look), then, weak = std::weak_ptr(work),
                 &queue = m_queue, alive = std::weak_ptr(m_alive)]() mutable {
                    if (weak.expired() || alive.expired())
                        return;
                    look(copy);
                    if (alive.expired())
                        return;
                    queue.post([this, copy = std::move(copy), then, weak, alive]() mutable {
                        const auto wanted = weak.lock();
                        if (!wanted || !alive.lock())
                            return;
                        copy.update = std::move(wanted->update);
                        *wanted = std::move(copy);
                        (this->*then)(wanted);
                    });
                });
}

void DesktopThumbnails::choose(const WorkPointer &work)
{
    if (work->cached)
        showCached(work);
    else if (work->subject && !work->hasFailed)
        make(work);
}

void DesktopThumbnails::showCached(const WorkPointer &work)
{
    // A thumbnail may be as hostile as any other file.
    work->step = m_decoder.image(
        FilePath::toUrl(work->cached->path), work->wanted, PictureDecoder::Urgency::Row,
        [weak = std::weak_ptr(work)](const std::optional<PictureDecoder::Picture> &picture) {
            const auto wanted = weak.lock();
            if (wanted && picture)
                wanted->update(wanted->cached->edge >= wanted->wanted ? Representation::Thumbnail
                                                                      : Representation::LowQuality,
                               picture->image, wanted->subject->version);
        });
}

void DesktopThumbnails::make(const WorkPointer &work)
{
    const auto weak = std::weak_ptr(work);
    const auto take = [this, weak](const std::optional<PictureDecoder::Picture> &picture) {
        if (const auto wanted = weak.lock())
            picture ? made(wanted, picture->image) : failed(wanted);
    };
    if (work->isDocument) {
        work->step = m_decoder.page(FilePath::toUrl(work->path), 0, ThumbnailFiles::edge,
                                    PictureDecoder::Urgency::Row, take);
    } else if (work->command) {
        work->step = m_thumbnailers->run(
            { *work->command, work->path, work->subject->uri, ThumbnailFiles::edge },
            [this, weak, take](const QByteArray &output) {
                const auto wanted = weak.lock();
                if (!wanted)
                    return;
                if (output.isEmpty())
                    return failed(wanted);
                // The run keeps its file for as long as somebody holds it.
                const Ticket run = wanted->step;
                wanted->step = m_decoder.image(
                    FilePath::toUrl(output), ThumbnailFiles::edge, PictureDecoder::Urgency::Row,
                    [run, take](const std::optional<PictureDecoder::Picture> &picture) {
                        take(picture);
                    });
            });
    }
}

void DesktopThumbnails::made(const WorkPointer &work, const QImage &image)
{
    onLane(
        work,
        [files = m_files, image](Work &looked) {
            files->write(*looked.subject, image);
            looked.image = fitted(image, looked.wanted);
        },
        &DesktopThumbnails::showMade);
}

void DesktopThumbnails::showMade(const WorkPointer &work)
{
    work->update(Representation::Thumbnail, work->image, work->subject->version);
}

/// A thumbnailer would fail again, and take its time for it; a decoder may only have been ended.
void DesktopThumbnails::failed(const WorkPointer &work)
{
    if (!work->command)
        return;
    m_lanes.run(work->path,
                [files = m_files, subject = *work->subject] { files->writeFailure(subject); });
}
