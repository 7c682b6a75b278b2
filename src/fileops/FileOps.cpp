#include "fileops/FileOps.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "base/Workers.h"
#include "platform/Applications.h"
#include "store/WebLocation.h"

namespace {

/// Each where its own disk is waited for, and after the one before it.
void openEach(QList<QUrl> urls, Applications &applications, Workers &workers)
{
    if (urls.isEmpty())
        return;
    const QUrl first = urls.takeFirst();
    workers.runAt(FilePath::fromUrl(first), [first, urls, &applications, &workers] {
        applications.open({ FileOps::opened(first) });
        openEach(urls, applications, workers);
    });
}

}

QUrl FileOps::opened(const QUrl &url)
{
    const QByteArray path = FilePath::fromUrl(url);
    if (!path.toLower().endsWith(".webloc"))
        return url;
    const auto content = NativeFile::read(path);
    return content.bytes ? WebLocation::decode(*content.bytes).value_or(url) : url;
}

void FileOps::open(const QList<QUrl> &urls, Applications &applications, Workers &workers,
                   const QString &application)
{
    if (urls.isEmpty())
        return;
    if (application.isEmpty())
        return openEach(urls, applications, workers);
    workers.runAt(FilePath::fromUrl(urls.first()), [urls, application, &applications] {
        QList<QUrl> targets;
        for (const QUrl &url : urls)
            targets.append(opened(url));
        applications.open(targets, application);
    });
}

void FileOps::reveal(const QList<QUrl> &urls, Applications &applications, Workers &workers)
{
    workers.run(WorkerPriority::UserInitiated,
                [urls, &applications] { applications.reveal(urls); });
}
