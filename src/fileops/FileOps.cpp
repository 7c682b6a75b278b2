#include "fileops/FileOps.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "base/Workers.h"
#include "platform/Applications.h"
#include "store/WebLocation.h"

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
    workers.run(WorkerPriority::UserInitiated, [urls, application, &applications] {
        QList<QUrl> targets;
        for (const QUrl &url : urls)
            targets.append(opened(url));
        if (application.isEmpty())
            applications.open(targets);
        else
            applications.open(targets, application);
    });
}

void FileOps::reveal(const QList<QUrl> &urls, Applications &applications, Workers &workers)
{
    workers.run(WorkerPriority::UserInitiated,
                [urls, &applications] { applications.reveal(urls); });
}
