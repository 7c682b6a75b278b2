#include "fileops/FileOps.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "base/Workers.h"
#include "platform/Applications.h"
#include "store/WebLocation.h"

namespace {

/// What stands for the file: applications of this desktop do not know web location
/// files.
QUrl opened(const QUrl &url)
{
    const QByteArray path = FilePath::fromUrl(url);
    if (!path.toLower().endsWith(".webloc"))
        return url;
    const auto content = NativeFile::read(path);
    return content.bytes ? WebLocation::decode(*content.bytes).value_or(url) : url;
}

}

void FileOps::open(const QList<QUrl> &urls, Applications &applications, Workers &workers)
{
    workers.run(WorkerPriority::UserInitiated, [urls, &applications] {
        QList<QUrl> targets;
        for (const QUrl &url : urls)
            targets.append(opened(url));
        applications.open(targets);
    });
}
