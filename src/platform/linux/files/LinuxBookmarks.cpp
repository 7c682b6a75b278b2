#include "platform/linux/files/LinuxBookmarks.h"

#include "platform/linux/files/LocalFolder.h"
#include "platform/linux/files/LocationCheck.h"

#include "base/FilePath.h"

namespace {

using Clock = std::chrono::steady_clock;

/// How long a folder that was found to be local counts as such while files are added.
constexpr auto folderTrust = std::chrono::milliseconds(500);

}

LinuxBookmarks::Places LinuxBookmarks::placesOf(const Directories &directories)
{
    return { directories.data + "/Trash", QList { directories.home } + directories.named };
}

LinuxBookmarks::LinuxBookmarks(Places places)
    : LinuxBookmarks(std::move(places), Bounds())
{
}

LinuxBookmarks::LinuxBookmarks(Places places, Bounds bounds)
    : m_parts(std::make_shared<BookmarkParts>(std::move(places), std::move(bounds)))
{
}

LinuxBookmarks::~LinuxBookmarks()
{
    m_parts->outside->cancel();
}

Bookmarked LinuxBookmarks::make(const QUrl &url)
{
    const QByteArray path = FilePath::standardized(FilePath::fromUrl(url));
    const auto mounts = m_parts->mounts.current();
    if (path.isEmpty() || mounts->isRemote(path))
        return { url, std::nullopt };
    auto &added = m_parts->added;
    const std::lock_guard lock(added.mutex);
    const qsizetype slash = qMax<qsizetype>(path.lastIndexOf('/'), 1);
    if (added.path != QByteArrayView(path).first(slash) || added.mounts != mounts->number()
        || added.until < Clock::now()) {
        const QByteArray folder = path.left(slash);
        if (LocalFolder(folder, *mounts).state() != LocalFolder::State::Open)
            return { url, std::nullopt };
        added.path = folder;
        added.mounts = mounts->number();
        added.until = Clock::now() + folderTrust;
        added.device = 0;
    }
    const FileLook look = lookAt(path);
    if (look.state != FileLook::State::Present)
        return { url, std::nullopt };
    if (added.device != look.identity.device) {
        added.device = look.identity.device;
        added.fileSystem = Volumes::fileSystemOf(path);
    }
    const auto kind = look.directory ? FilePath::Kind::Directory : FilePath::Kind::File;
    return { FilePath::toUrl(path, kind),
             BookmarkCoding::encode({ look.identity, added.fileSystem, path }) };
}

/// Devices are numbered anew with every start of the machine, so they tell nothing.
bool LinuxBookmarks::mayBeOf(const QByteArray &bookmark, const QUrl &url)
{
    const auto record = BookmarkCoding::decode(bookmark);
    if (!record)
        return false;
    const FileLook look = lookAt(FilePath::fromUrl(url));
    FileIdentity identity = look.identity;
    identity.device = record->identity.device;
    return look.state == FileLook::State::Unknown || identity == record->identity;
}

QList<BookmarkAnswer> LinuxBookmarks::resolve(const QList<BookmarkQuery> &queries, Bound bound)
{
    const auto parts = m_parts; // A check that hangs in a dead disk may outlive the program's rest.
    // A brief check must not wait for one in the background.
    const std::unique_lock lock(parts->memoMutex, std::try_to_lock);
    BookmarkMemo own;
    return LocationCheck(*parts, lock ? parts->memo : own, queries, bound).run();
}
