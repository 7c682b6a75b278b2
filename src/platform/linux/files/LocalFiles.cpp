#include "platform/linux/files/LocalFiles.h"

#include "base/DetachedThread.h"
#include "base/FilePath.h"

#include <QStringList>

#include <dlfcn.h>
#include <glib.h>
#include <sys/stat.h>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace {

/// The desktop mounts these below a folder of the user's, where every program finds
/// their files. None for what it has not mounted, or cannot.
QUrl mounted(const QUrl &url)
{
    // Loaded by the first such address: the program's start does without the library.
    static void *const gio = ::dlopen("libgio-2.0.so.0", RTLD_NOW | RTLD_LOCAL);
    if (!gio)
        return url;
    static const auto fileFor
        = reinterpret_cast<void *(*)(const char *)>(::dlsym(gio, "g_file_new_for_uri"));
    static const auto pathOf = reinterpret_cast<char *(*)(void *)>(::dlsym(gio, "g_file_get_path"));
    static const auto unref = reinterpret_cast<void (*)(void *)>(::dlsym(gio, "g_object_unref"));
    const QByteArray address = url.toEncoded();
    void *file = fileFor(address.constData());
    g_autofree char *path = pathOf(file);
    const QByteArray local(path);
    unref(file);
    return local.isEmpty() ? url : FilePath::toUrl(FilePath::standardized(local));
}

/// A directory's address ends with a slash, whatever the source wrote.
Address withSlashOfKind(const Address &url)
{
    const QByteArray path = FilePath::fromUrl(url);
    struct stat status;
    if (path.isEmpty() || lstat(path.constData(), &status) != 0)
        return url;
    return FilePath::toUrl(
        path, S_ISDIR(status.st_mode) ? FilePath::Kind::Directory : FilePath::Kind::File);
}

}

bool LocalFiles::isRemote(const QUrl &url)
{
    static const QStringList schemes
        = QStringLiteral("admin afc afp archive burn cdda computer dav davs dns-sd ftp ftpis ftps "
                         "google-drive gphoto2 localtest mtp network nfs obex onedrive recent sftp "
                         "smb ssh trash")
              .split(u' ');
    return schemes.contains(url.scheme());
}

/// A file system, or the service of a virtual one, may take for ever to answer: the
/// thread that hangs is left behind.
QList<Address> LocalFiles::examined(const QList<Address> &urls, std::chrono::milliseconds limit)
{
    struct Look
    {
        std::mutex mutex;
        std::condition_variable changed;
        QList<Address> done;
    };
    auto look = std::make_shared<Look>();
    const bool begun = startDetached([look, urls] {
        for (const Address &url : urls) {
            const Address known = withSlashOfKind(isRemote(url) ? Address(mounted(url)) : url);
            const std::lock_guard guard(look->mutex);
            look->done.append(known);
            if (look->done.size() == urls.size())
                look->changed.notify_all();
        }
    });
    if (!begun)
        return urls;
    std::unique_lock lock(look->mutex);
    look->changed.wait_for(lock, limit, [&] { return look->done.size() == urls.size(); });
    return look->done + urls.mid(look->done.size());
}
