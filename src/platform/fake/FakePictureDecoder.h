#pragma once

#include "platform/PictureDecoder.h"

#include <memory>
#include <utility>
#include <vector>

/// Keeps every request until the test answers it.
class FakePictureDecoder final : public PictureDecoder
{
public:
    enum class Kind { Version, Image, Data, Page, Frames, Archive };
    struct Request
    {
        Kind kind;
        QUrl url {};
        int number = 0; // Of the page, or the first frame.
        int maxPixel = 0;
        Urgency urgency = Urgency::Preview;
        QByteArray data {};
        Answer<Picture> picture {};
        Answer<QByteArray> version {};
        Answer<QList<Frame>> frames {};
        Answer<Listing> listing {};
        std::weak_ptr<const void> ticket {};

        bool isCancelled() const { return ticket.expired(); }
    };

    Ticket version(const QUrl &url, Answer<QByteArray> answer) override
    {
        return ask({ .kind = Kind::Version, .url = url, .version = std::move(answer) });
    }
    Ticket image(const QUrl &url, int maxPixel, Urgency urgency, Answer<Picture> answer) override
    {
        return ask({ .kind = Kind::Image,
                     .url = url,
                     .maxPixel = maxPixel,
                     .urgency = urgency,
                     .picture = std::move(answer) });
    }
    Ticket imageFromData(const QByteArray &data, Answer<Picture> answer) override
    {
        return ask({ .kind = Kind::Data, .data = data, .picture = std::move(answer) });
    }
    Ticket page(const QUrl &url, int page, int maxPixel, Urgency urgency,
                Answer<Picture> answer) override
    {
        return ask({ .kind = Kind::Page,
                     .url = url,
                     .number = page,
                     .maxPixel = maxPixel,
                     .urgency = urgency,
                     .picture = std::move(answer) });
    }
    Ticket frames(const QUrl &url, int first, int maxPixel, Answer<QList<Frame>> answer) override
    {
        return ask({ .kind = Kind::Frames,
                     .url = url,
                     .number = first,
                     .maxPixel = maxPixel,
                     .frames = std::move(answer) });
    }
    Ticket archive(const QUrl &url, Answer<Listing> answer) override
    {
        return ask({ .kind = Kind::Archive, .url = url, .listing = std::move(answer) });
    }

    /// Answers these as the real one does, of pictures that a test made.
    void decodeData()
    {
        for (Request &request : std::exchange(requests, {})) {
            if (request.kind != Kind::Data) {
                requests.push_back(std::move(request));
                continue;
            }
            Picture picture;
            picture.image = QImage::fromData(request.data);
            request.picture(picture.image.isNull() ? std::nullopt : std::optional(picture));
        }
    }

    std::vector<Request> requests;

private:
    Ticket ask(Request request)
    {
        auto ticket = std::make_shared<int>(0);
        request.ticket = ticket;
        requests.push_back(std::move(request));
        return ticket;
    }
};
