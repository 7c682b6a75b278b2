#pragma once

#include <QByteArray>

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

/// Mounts that only this process and its children see, and that end with them.
/// Works for root and, where the kernel lets users have namespaces, for anyone.
class Mounts
{
public:
    /// Before the first thread. Whether mounts can be made.
    static bool enter()
    {
        const uid_t user = ::getuid();
        const gid_t group = ::getgid();
        if (user != 0) {
            if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
                return false;
            put("/proc/self/setgroups", "deny");
            put("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
            put("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
        } else if (::unshare(CLONE_NEWNS) != 0) {
            return false;
        }
        return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }

    static bool smallDisk(const QByteArray &folder, const char *size)
    {
        const std::string options = std::string("mode=0700,size=") + size;
        return ::mount("tmpfs", folder.constData(), "tmpfs", 0, options.c_str()) == 0;
    }

    enum class Access { Read, ReadAndWrite };
    /// The folder must be a mount.
    static bool setAccess(const QByteArray &folder, Access access)
    {
        unsigned long flags = MS_REMOUNT;
        if (access == Access::Read)
            flags |= MS_RDONLY;
        return ::mount("none", folder.constData(), nullptr, flags, nullptr) == 0;
    }

private:
    static void put(const char *path, const std::string &text)
    {
        const int file = ::open(path, O_WRONLY | O_CLOEXEC);
        if (file < 0 || ::write(file, text.data(), text.size()) < 0)
            std::perror(path);
        ::close(file);
    }
};
