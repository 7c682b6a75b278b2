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
    const std::tuple<const char *, const char *, bool> cases[] // Whether it may be mounted.
        = { { "localtest:///usr/./lib", "file:///usr/lib/", true },
            { "smb://nowhere/share/a", "smb://nowhere/share/a", true },
            { "file:///usr", "file:///usr/", false },
            { "https://Example.org/", "https://Example.org/", false } };
    QList<Address> asked;
    for (const auto &[url, known, isRemote] : cases) {
        asked.append(Address(QUrl(QLatin1String(url)), url));
        EXPECT_EQ(LocalFiles::examined(asked).last().text, known);
        EXPECT_EQ(LocalFiles::isRemote(asked.last()), isRemote);
    }

    hangs = true;
    EXPECT_EQ(LocalFiles::examined(asked, std::chrono::milliseconds(5)), asked);
    hangs = false;
}
