#pragma once

#include <QByteArray>
#include <QImage>

#include <optional>

/// The file that a thumbnail stands for, as the shared cache names it.
struct ThumbnailSubject
{
    QByteArray path;
    QByteArray uri; // Escaped as file managers do, since its digest names the thumbnail.
    QByteArray version; // See PictureDecoder::version().
    qint64 modified = 0; // Seconds since 1970.
    qint64 size = 0; // Bytes.
};

/// The cache of thumbnails that programs of a desktop share, by the freedesktop
/// Thumbnail Managing Standard 0.9. Waits for files: worker threads only.
class ThumbnailFiles
{
public:
    /// folder: the user's "thumbnails" in the cache folder.
    explicit ThumbnailFiles(QByteArray folder);

    /// None where it is not a file of content, or itself a thumbnail.
    std::optional<ThumbnailSubject> subject(const QByteArray &path) const;

    struct Found
    {
        QByteArray path;
        int edge; // Pixels of its size class.
    };
    /// The smallest that has that many pixels, else the largest; only one that was
    /// made of the file as it is now.
    std::optional<Found> find(const ThumbnailSubject &subject, int wanted) const;
    /// Somebody tried this file, as it is now, in vain.
    bool hasFailed(const ThumbnailSubject &subject) const;

    /// Of at most that many pixels, which is what write() keeps.
    static constexpr int edge = 256;
    void write(const ThumbnailSubject &subject, const QImage &image) const;
    void writeFailure(const ThumbnailSubject &subject) const;

private:
    QByteArray nameOf(const ThumbnailSubject &subject) const;
    void save(const QByteArray &folder, const ThumbnailSubject &subject, QImage image) const;

    QByteArray m_folder;
};
