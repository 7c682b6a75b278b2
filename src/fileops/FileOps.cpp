#include "fileops/FileOps.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "base/Workers.h"
#include "platform/Applications.h"
#include "store/WebLocation.h"

#include <utility>

namespace {

/// Each is looked at where its own disk is waited for, and after the one before it.
void openNext(QList<Address> urls, QList<Address> targets, const QString &application,
              Applications &applications, Workers &workers)
{
    const Address next = urls.takeFirst();
    workers.runAt(FilePath::fromUrl(next),
                  [next, urls, targets, application, &applications, &workers]() mutable {
                      targets.append(FileOps::opened(next));
                      if (application.isEmpty())
                          applications.open(std::exchange(targets, {}));
                      else if (urls.isEmpty())
                          applications.open(targets, application);
                      if (!urls.isEmpty())
                          openNext(urls, targets, application, applications, workers);
                  });
}

}

Address FileOps::opened(const Address &url)
{
    const QByteArray path = FilePath::fromUrl(url);
    if (!path.toLower().endsWith(".webloc"))
        return url;
    const auto content = NativeFile::read(path);
    return content.bytes ? WebLocation::decode(*content.bytes).value_or(url) : url;
}

void FileOps::open(const QList<Address> &urls, Applications &applications, Workers &workers,
                   const QString &application)
{
    if (!urls.isEmpty())
        openNext(urls, {}, application, applications, workers);
}

void FileOps::reveal(const QList<QUrl> &urls, Applications &applications, Workers &workers)
{
    workers.run(WorkerPriority::UserInitiated,
                [urls, &applications] { applications.reveal(urls); });
}
