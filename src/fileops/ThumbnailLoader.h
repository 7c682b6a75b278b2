#pragma once

#include "base/Observable.h"
#include "base/Ticket.h"
#include "platform/ThumbnailGenerator.h"

#include <QCache>
#include <QImage>
#include <QUrl>

#include <optional>

class PictureDecoder;

/// What all loaders share: who makes pictures, and the pictures that were made.
/// Main thread.
class Thumbnails
{
public:
    Thumbnails(PictureDecoder &decoder, ThumbnailGenerator &generator);

    /// The full thumbnail of that size, if it was made lately.
    QImage cached(const QUrl &url, int maxPixel) const;

private:
    friend class ThumbnailLoader;
    struct Key
    {
        QUrl url;
        int maxPixel;

        bool operator==(const Key &) const = default;
        friend size_t qHash(const Key &key, size_t seed = 0)
        {
            return qHashMulti(seed, key.url, key.maxPixel);
        }
    };
    struct Entry
    {
        QImage image;
        QByteArray version; // Of the file that it was made of.
    };

    const Entry *find(const QUrl &url, int maxPixel) const;
    void keep(const QUrl &url, int maxPixel, const QImage &image, const QByteArray &version);

    PictureDecoder &m_decoder;
    ThumbnailGenerator &m_generator;
    QCache<Key, Entry> m_cache; // In bytes.
};

/// The picture of one row's file, which improves in steps: the icon of its type,
/// what the desktop has, and the file itself, decoded where it is an image. A
/// loader that is dropped cancels what has not begun. Main thread.
class ThumbnailLoader
{
public:
    /// Shows what is at hand; load() does the work.
    ThumbnailLoader(Thumbnails &shared, const QUrl &url, int maxPixel);

    /// The row appeared, or its file is another one now, or the screen. `size` is
    /// the edge length in points. A picture that is at hand is shown at once, and
    /// made anew where its file has changed since.
    void load(const QUrl &url, double size, double scale);

    Observable<QImage> image; // Null: nothing better than the icon of its type.

private:
    using Representation = ThumbnailGenerator::Representation;

    void decode();
    void askDesktop();
    void compareVersions(const QByteArray &known);
    void show(Representation quality, const QImage &picture);

    Thumbnails &m_shared;
    QUrl m_url; // What the loader stands for; empty before the first load().
    double m_size = 0;
    double m_scale = 1;
    int m_maxPixel = 0;
    std::optional<Representation> m_shownQuality; // None: the placeholder. Only rises.
    QByteArray m_version;
    Ticket m_work;
};
