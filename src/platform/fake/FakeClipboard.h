#pragma once

#include "platform/Clipboard.h"

#include <utility>

class FakeClipboard final : public Clipboard
{
public:
    bool read(std::function<void(const ItemProviders &)> completion) override
    {
        if (holds)
            completion(*holds);
        return holds.has_value();
    }
    void write(const QList<QUrl> &urls) override { written = urls; }
    void writeText(const QList<QUrl> &urls) override { writtenAsText = urls; }

    std::optional<ItemProviders> holds;
    QList<QUrl> written;
    QList<QUrl> writtenAsText;
};
