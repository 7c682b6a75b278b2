#include "platform/linux/files/LocalFiles.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

std::atomic<bool> hangs = false;

/// Stands for the desktop's virtual file systems: "localtest" is mounted at /usr.
GFile *fileFor(GVfs *, const char *address, void *)
{
    while (hangs)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return g_file_new_for_path(address + sizeof "localtest://" - 1);
}

}

TEST(LocalFilesTest, MountedAddressesBecomePathsAndNobodyIsWaitedForLong)
{
    ASSERT_TRUE(g_vfs_register_uri_scheme(g_vfs_get_default(), "localtest", fileFor, nullptr,
                                          nullptr, nullptr, nullptr, nullptr));
    const QList<QUrl> asked = QUrl::fromStringList(
        { QStringLiteral("localtest:///usr/./lib"), QStringLiteral("smb://nowhere/share/a"),
          QStringLiteral("file:///usr"), QStringLiteral("https://example.org/") });
    const QList<QUrl> told = LocalFiles::examined(asked);
    EXPECT_EQ(told.mid(0, 3),
              QUrl::fromStringList({ QStringLiteral("file:///usr/lib/"),
                                     QStringLiteral("smb://nowhere/share/a"),
                                     QStringLiteral("file:///usr/") }));
    EXPECT_EQ(told.last(), asked.last());
    QList<bool> remote;
    for (const QUrl &url : asked)
        remote.append(LocalFiles::isRemote(url));
    EXPECT_EQ(remote, (QList { true, true, false, false }));

    hangs = true;
    EXPECT_EQ(LocalFiles::examined(asked, std::chrono::milliseconds(5)), asked);
    hangs = false;
}
