#pragma once

#include "platform/DropTarget.h"

#include <utility>
#include <vector>

/// A dropped object that answers when the test says so, from any thread.
class FakeItemProvider final : public ItemProvider
{
public:
    QStringList registeredTypes() const override { return types; }
    bool hasFileUrl() const override { return isFile; }
    bool hasText() const override { return text.has_value(); }
    bool hasUrl() const override { return url.has_value(); }

    void loadUrl(std::function<void(std::optional<Address>)> completion) override
    {
        pending.push_back([this, completion = std::move(completion)] { completion(url); });
    }
    void loadText(std::function<void(std::optional<QString>)> completion) override
    {
        pending.push_back([this, completion = std::move(completion)] { completion(text); });
    }
    void loadData(const QString &type,
                  std::function<void(std::optional<QByteArray>)> completion) override
    {
        asked.append(type);
        pending.push_back([this, completion = std::move(completion)] { completion(data); });
    }

    /// Answers everything that was asked.
    void answer()
    {
        for (const auto &load : std::exchange(pending, {}))
            load();
    }

    QStringList types;
    bool isFile = false;
    std::optional<Address> url;
    std::optional<QString> text;
    std::optional<QByteArray> data;
    QStringList asked;
    std::vector<std::function<void()>> pending;
};
