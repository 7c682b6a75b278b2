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
    void write(const QList<Address> &urls) override { written = urls; }
    void writeText(const QList<Address> &urls) override { writtenAsText = urls; }

    std::optional<ItemProviders> holds;
    QList<Address> written;
    QList<Address> writtenAsText;
};
