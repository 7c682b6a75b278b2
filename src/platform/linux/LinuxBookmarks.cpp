#include "platform/linux/LinuxBookmarks.h"

#include "platform/linux/BookmarkParts.h"
#include "platform/linux/LocalFolder.h"
#include "platform/linux/LocationCheck.h"

#include "base/FilePath.h"

namespace {

using Clock = std::chrono::steady_clock;

/// How long a folder that was found to be local counts as such while files are
/// added: thousands of one folder come at a time.
constexpr auto folderTrust = std::chrono::milliseconds(500);

bool isLocal(const QByteArray &path, const Mounts &mounts, BookmarkParts &parts)
{
    const std::lock_guard lock(parts.folderMutex);
    const qsizetype slash = path.lastIndexOf('/');
    const auto folder = QByteArray::fromRawData(path.constData(), qMax<qsizetype>(slash, 1));
    const auto now = Clock::now();
    if (parts.localFolder != folder || parts.localFolderMounts != mounts.number()
        || parts.localFolderUntil < now) {
        if (LocalFolder(FilePath::parent(path), mounts).state() != LocalFolder::State::Open)
            return false;
        parts.localFolder = FilePath::parent(path);
        parts.localFolderMounts = mounts.number();
        parts.localFolderUntil = now + folderTrust;
    }
    return !mounts.isRemote(path);
}

}

LinuxBookmarks::Places LinuxBookmarks::placesOf(const Directories &directories)
{
    Places places;
    places.homeTrash = directories.data + "/Trash";
    places.userFolders
        = [folders = QList { directories.home } + directories.named] { return folders; };
    return places;
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
    m_parts->outside.cancel();
}

Bookmarked LinuxBookmarks::make(const QUrl &url)
{
    const QByteArray path = FilePath::standardized(FilePath::fromUrl(url));
    const auto mounts = m_parts->mounts.current();
    if (path.isEmpty() || !isLocal(path, *mounts, *m_parts))
        return { url, std::nullopt };
    const FileLook look = lookAt(path);
    if (look.state != FileLook::State::Present)
        return { url, std::nullopt };
    const auto kind = look.directory ? FilePath::Kind::Directory : FilePath::Kind::File;
    const quint64 system = m_parts->systems.of(look.identity.device, path, *mounts);
    return { FilePath::toUrl(path, kind), BookmarkCoding::encode({ look.identity, system, path }) };
}

QList<BookmarkAnswer> LinuxBookmarks::resolve(const QList<BookmarkQuery> &queries, Bound bound)
{
    const auto parts = m_parts; // A check that hangs in a dead disk may outlive the program's rest.
    // A brief check must not wait for one in the background.
    const std::unique_lock lock(parts->memoMutex, std::try_to_lock);
    BookmarkMemo own;
    return LocationCheck(*parts, lock ? parts->memo : own, queries, bound).run();
}
