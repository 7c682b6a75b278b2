#pragma once

#include "base/FilePath.h"
#include "platform/FolderEvents.h"

#include <QHash>

/// Folders on the disk, whose events a test makes.
class FakeFolderEvents final : public FolderEvents
{
public:
    std::shared_ptr<WatchedFolder> open(const QByteArray &path) override
    {
        return FilePath::exists(path) ? std::make_shared<Folder>(*this, path) : nullptr;
    }

    Writing writing(const QByteArray &path) const override
    {
        return written.value(path, Writing::Over);
    }

    void change(const QByteArray &folder)
    {
        if (const auto handler = m_handlers.value(folder).lock())
            (*handler)();
    }

    bool isWatched(const QByteArray &folder) const { return !m_handlers.value(folder).expired(); }

    QHash<QByteArray, Writing> written;

private:
    using Handler = std::function<void()>;

    class Folder final : public WatchedFolder
    {
    public:
        Folder(FakeFolderEvents &events, QByteArray path)
            : m_events(events)
            , m_path(std::move(path))
        {
        }
        Ticket listen(std::function<void()> handler) override
        {
            const auto kept = std::make_shared<Handler>(std::move(handler));
            m_events.m_handlers.insert(m_path, kept);
            return kept;
        }

    private:
        FakeFolderEvents &m_events;
        QByteArray m_path;
    };

    QHash<QByteArray, std::weak_ptr<Handler>> m_handlers;
};
