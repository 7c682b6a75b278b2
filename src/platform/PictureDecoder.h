#pragma once

#include "base/Ticket.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

/// What stands in files, decoded in processes of their own, so that a hostile
/// file costs nothing but its own answer. Local files only; nothing is executed
/// and nothing fetched.
///
/// Main thread. Each call answers once, later, on the main thread; none where
/// the file cannot be decoded, within the time and the memory that it is given.
/// Dropping the ticket cancels: the answer does not come, and what has not begun
/// is not done at all.
class PictureDecoder
{
public:
    /// Which waiting work goes first.
    enum class Urgency { Row, Preview };

    struct Picture
    {
        QImage image;
        QSize whole; // Of the full picture, upright: pixels, or points of a page.
        int count = 1; // Frames of an animation, pages of a document.
        QByteArray version; // Of the file when it was opened; see version().
    };
    struct Frame
    {
        QImage image;
        int milliseconds = 100; // That it is shown.
    };
    struct Entry
    {
        QString path; // Parts separated by "/".
        qint64 size = 0; // Bytes.
        bool folder = false;
    };
    struct Listing
    {
        QList<Entry> entries;
        bool whole = true; // False where it was cut off.
    };
    template<typename T>
    using Answer = std::function<void(std::optional<T>)>;

    virtual ~PictureDecoder() = default;
    /// Bytes that differ when the file was replaced or written to: its identity,
    /// size and modification time. Asked without reading it.
    virtual Ticket version(const QUrl &url, Answer<QByteArray> answer) = 0;
    /// The picture itself, never a preview that the file carries; upright, at most
    /// that many pixels along its longer side, and never enlarged.
    virtual Ticket image(const QUrl &url, int maxPixel, Urgency urgency, Answer<Picture> answer)
        = 0;
    /// All pixels of a picture that came as bytes, upright; 64 million at most, and no drawing.
    /// Nothing of one that is damaged.
    virtual Ticket imageFromData(const QByteArray &data, Answer<Picture> answer) = 0;
    /// One page of a PDF document, from 0; fitted into that square.
    virtual Ticket page(const QUrl &url, int page, int maxPixel, Urgency urgency,
                        Answer<Picture> answer)
        = 0;
    /// The frames of an animation from that one on, as many as come at once
    /// within bounded memory; an empty list past the end.
    virtual Ticket frames(const QUrl &url, int first, int maxPixel, Answer<QList<Frame>> answer)
        = 0;
    /// What an archive holds, by its directory; nothing is unpacked.
    virtual Ticket archive(const QUrl &url, Answer<Listing> answer) = 0;
};
