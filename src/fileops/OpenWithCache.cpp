#include "fileops/OpenWithCache.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "base/Workers.h"
#include "fileops/FileOps.h"

namespace {

constexpr int mostApplications = 12;

QString kindOf(const QUrl &url)
{
    if (url.path().endsWith(u'/'))
        return QStringLiteral("/");
    const QString name = FilePath::display(FilePath::lastComponent(FilePath::fromUrl(url)));
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.mid(dot + 1).toLower() : QString();
}

}

OpenWithCache::OpenWithCache(Applications &applications, MainQueue &queue, Workers &workers)
    : m_applications(applications)
    , m_queue(queue)
    , m_workers(workers)
{
}

QList<OpenWithApp> OpenWithCache::apps(const QUrl &url)
{
    const QString kind = kindOf(url);
    if (const auto known = lists.value().constFind(kind); known != lists.value().constEnd())
        return *known;
    if (m_pending.contains(kind))
        return {};
    m_pending.insert(kind);
    m_workers.runAt(FilePath::fromUrl(url),
                    [this, kind, url, &applications = m_applications, &queue = m_queue,
                     alive = std::weak_ptr(m_alive)] {
                        const auto found
                            = applications.thatOpen(FileOps::opened(url), mostApplications);
                        queue.post([this, kind, found, alive] {
                            if (!alive.lock())
                                return;
                            auto next = lists.value();
                            next.insert(kind, found);
                            lists.set(std::move(next));
                            m_pending.remove(kind);
                        });
                    });
    return {};
}
