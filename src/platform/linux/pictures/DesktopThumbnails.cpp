#include "platform/linux/pictures/DesktopThumbnails.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "platform/linux/files/FileLanes.h"
#include "platform/linux/pictures/HelperProcess.h"

#include <algorithm>
#include <utility>

namespace {

QImage fitted(const QImage &image, int edge)
{
    if (std::max(image.width(), image.height()) <= edge)
        return image;
    return image.scaled(edge, edge, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

/// What a thread saw of a file and of what there is for it.
struct Looked
{
    std::optional<ThumbnailSubject> subject {}; // None where there is nothing to be done.
    std::optional<ThumbnailFiles::Found> cached {};
    bool isDocument = false;
    std::optional<QByteArrayList> command {};
};

/// A program that hangs on a server's file could not even be ended: none is run there.
enum class Programs { Allowed, Forbidden };

Looked lookedAt(const QByteArray &path, int wanted, const ThumbnailFiles &files,
                Thumbnailers &thumbnailers, Programs programs)
{
    Looked looked { files.subject(path) };
    if (looked.subject)
        looked.cached = files.find(*looked.subject, wanted);
    if (!looked.subject || looked.cached)
        return looked;
    if (files.hasFailed(*looked.subject))
        return {};
    const QMimeType type = FilePath::typeByName(path);
    looked.isDocument = type.inherits(QStringLiteral("application/pdf"));
    QByteArrayList names { type.name().toUtf8() };
    for (const QString &alias : type.aliases())
        names.append(alias.toUtf8());
    if (!looked.isDocument && programs == Programs::Allowed)
        looked.command = thumbnailers.commandFor(names);
    return looked;
}

}

/// One request. Its owner holds it by the ticket.
struct DesktopThumbnails::Work
{
    QByteArray path;
    int wanted = 0; // Pixels.
    Update update;
    Looked looked {};
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
    const auto programs = m_lanes.isRemote(path) ? Programs::Forbidden : Programs::Allowed;
    m_lanes.look(
        path, m_queue, m_alive,
        [path, wanted = work->wanted, files = m_files, thumbnailers = m_thumbnailers, programs,
         weak = std::weak_ptr(work)] {
            return weak.expired() ? Looked()
                                  : lookedAt(path, wanted, *files, *thumbnailers, programs);
        },
        [this, weak = std::weak_ptr(work)](const Looked &looked) {
            const auto asked = weak.lock();
            if (!asked || !looked.subject)
                return;
            asked->looked = looked;
            looked.cached ? showCached(asked) : make(asked);
        });
    return work;
}

void DesktopThumbnails::showCached(const WorkPointer &work)
{
    // A thumbnail may be as hostile as any other file.
    work->step = m_decoder.image(
        FilePath::toUrl(work->looked.cached->path), work->wanted, PictureDecoder::Urgency::Row,
        [weak = std::weak_ptr(work)](const std::optional<PictureDecoder::Picture> &picture) {
            const auto wanted = weak.lock();
            if (wanted && picture)
                wanted->update(wanted->looked.cached->edge >= wanted->wanted
                                   ? Representation::Thumbnail
                                   : Representation::LowQuality,
                               picture->image, wanted->looked.subject->version);
        });
}

void DesktopThumbnails::make(const WorkPointer &work)
{
    const auto weak = std::weak_ptr(work);
    const auto take = [this, weak](const std::optional<PictureDecoder::Picture> &picture) {
        if (const auto wanted = weak.lock())
            picture ? made(wanted, picture->image) : failed(wanted);
    };
    if (work->looked.isDocument) {
        work->step = m_decoder.page(FilePath::toUrl(work->path), 0, ThumbnailFiles::edge,
                                    PictureDecoder::Urgency::Row, take);
    } else if (work->looked.command) {
        work->step = m_thumbnailers->run(
            { *work->looked.command, work->path, work->looked.subject->uri, ThumbnailFiles::edge },
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
    m_lanes.look(
        work->path, m_queue, m_alive,
        [files = m_files, subject = *work->looked.subject, image, wanted = work->wanted] {
            files->write(subject, image);
            return fitted(image, wanted);
        },
        [weak = std::weak_ptr(work)](const QImage &shown) {
            const auto asked = weak.lock();
            if (!asked)
                return;
            asked->step.reset(); // With the thumbnailer's file.
            asked->update(Representation::Thumbnail, shown, asked->looked.subject->version);
        });
}

/// A thumbnailer would fail again, and take its time for it; a decoder may only have been ended.
void DesktopThumbnails::failed(const WorkPointer &work)
{
    if (!work->looked.command)
        return;
    m_lanes.run(work->path, [files = m_files, subject = *work->looked.subject] {
        files->writeFailure(subject);
    });
}
