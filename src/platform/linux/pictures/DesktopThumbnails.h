#pragma once

#include "platform/Directories.h"
#include "platform/PictureDecoder.h"
#include "platform/ThumbnailGenerator.h"
#include "platform/linux/pictures/ThumbnailFiles.h"
#include "platform/linux/pictures/Thumbnailers.h"

#include <memory>

class FileLanes;
class MainQueue;

/// Thumbnails as the desktop's other programs see them: what the shared cache
/// holds; else a document's first page, or what an application's thumbnailer
/// makes, which then goes into the cache. What failed is not tried again until the
/// file changes.
class DesktopThumbnails final : public ThumbnailGenerator
{
public:
    struct Places
    {
        QByteArray cache; // The folder "thumbnails".
        QByteArrayList data; // Folders of the desktop's data, the user's first.
        QString confined; // The program in which thumbnailers are run.
    };
    static Places placesOf(const Directories &directories);

    /// All that it is given outlives it.
    DesktopThumbnails(Places places, PictureDecoder &decoder, FileLanes &lanes, MainQueue &queue);
    ~DesktopThumbnails() override;

    Ticket generate(const QUrl &url, double size, double scale, Update update) override;

private:
    struct Work;
    using WorkPointer = std::shared_ptr<Work>;

    void showCached(const WorkPointer &work);
    void make(const WorkPointer &work);
    void made(const WorkPointer &work, const QImage &image);
    void failed(const WorkPointer &work);

    // Threads that hang on a file may outlive this.
    const std::shared_ptr<ThumbnailFiles> m_files;
    const std::shared_ptr<Thumbnailers> m_thumbnailers;
    PictureDecoder &m_decoder;
    FileLanes &m_lanes;
    MainQueue &m_queue;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
