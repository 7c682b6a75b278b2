#pragma once

#include "platform/PictureDecoder.h"

#include <memory>
#include <vector>

/// Keeps every request until the test answers it.
class FakePictureDecoder final : public PictureDecoder
{
public:
    enum class Kind { Version, Image, Page, Frames, Archive };
    struct Request
    {
        Kind kind;
        QUrl url;
        int number = 0; // Of the page, or the first frame.
        int maxPixel = 0;
        Urgency urgency = Urgency::Preview;
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
