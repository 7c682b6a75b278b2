#pragma once

#include "platform/DropTarget.h"

/// A file that the program itself drops: its address is known, and nobody is asked.
class OwnFile final : public ItemProvider
{
public:
    explicit OwnFile(QUrl url)
        : m_url(std::move(url))
    {
    }

    QStringList registeredTypes() const override { return { QStringLiteral("text/uri-list") }; }
    bool hasFileUrl() const override { return true; }
    bool hasText() const override { return false; }
    bool hasUrl() const override { return true; }

    void loadUrl(std::function<void(std::optional<Address>)> completion) override
    {
        completion(m_url);
    }
    void loadText(std::function<void(std::optional<QString>)> completion) override
    {
        completion({});
    }
    void loadData(const QString &,
                  std::function<void(std::optional<QByteArray>)> completion) override
    {
        completion({});
    }

private:
    QUrl m_url;
};
