#pragma once

#include "platform/ThumbnailGenerator.h"

#include <memory>
#include <vector>

/// Keeps every request; the test sends the pictures.
class FakeThumbnailGenerator final : public ThumbnailGenerator
{
public:
    struct Request
    {
        QUrl url;
        double size;
        double scale;
        Update update;
        std::weak_ptr<const void> ticket;
    };

    Ticket generate(const QUrl &url, double size, double scale, Update update) override
    {
        auto ticket = std::make_shared<int>(0);
        requests.push_back({ url, size, scale, std::move(update), ticket });
        return ticket;
    }

    std::vector<Request> requests;
};
