#pragma once

#include "base/Observable.h"
#include "platform/Applications.h"

#include <QHash>
#include <QSet>

#include <memory>

class MainQueue;
class Workers;

/// Which applications open a kind of file: looked up once for each kind, and kept
/// for as long as the program runs. All folders are one kind, and so are all files
/// of one extension, and those without one. Main thread.
class OpenWithCache
{
public:
    /// The applications outlive the workers.
    OpenWithCache(Applications &applications, MainQueue &queue, Workers &workers);

    /// What is known by now. The first question about a kind starts its look-up,
    /// whose end `lists` tells.
    QList<OpenWithApp> apps(const QUrl &url);

    Observable<QHash<QString, QList<OpenWithApp>>> lists; // By kind, those that were looked up.

private:
    Applications &m_applications;
    MainQueue &m_queue;
    Workers &m_workers;
    QSet<QString> m_pending;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
