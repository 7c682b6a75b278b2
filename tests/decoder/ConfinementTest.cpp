// Confines itself as a decoder does, and tries what a hostile file would make it do.
#include "decoder/Confinement.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::string folder; // Made before.
int terminal = -1; // Open before.

}

TEST(Confinement, DeniesWhatDecodingDoesNotNeed)
{
    const std::string file = folder + "/file";
    const std::string other = folder + "/other";
    const struct
    {
        const char *what;
        std::function<long()> attempt;
    } attempts[] = {
        { "write", [&] { return ::open(file.c_str(), O_WRONLY); } },
        { "read and write", [&] { return ::open(file.c_str(), O_RDWR); } },
        { "truncate by opening", [&] { return ::open(file.c_str(), O_RDONLY | O_TRUNC); } },
        { "create", [&] { return ::open(other.c_str(), O_RDONLY | O_CREAT, 0600); } },
        { "nameless", [&] { return ::open(folder.c_str(), O_TMPFILE | O_RDWR, 0600); } },
        { "open by other call", [&] { return ::syscall(SYS_open, file.c_str(), O_WRONLY); } },
        { "create by other call", [&] { return ::creat(other.c_str(), 0600); } },
        { "unlink", [&] { return ::unlink(file.c_str()); } },
        { "rename", [&] { return ::rename(file.c_str(), other.c_str()); } },
        { "link", [&] { return ::link(file.c_str(), other.c_str()); } },
        { "folder", [&] { return ::mkdir(other.c_str(), 0700); } },
        { "permissions", [&] { return ::chmod(file.c_str(), 0777); } },
        { "permissions, newer call",
          [&] { return ::syscall(452, AT_FDCWD, file.c_str(), 0777, 0); } },
        { "times", [&] { return ::utimensat(AT_FDCWD, file.c_str(), nullptr, 0); } },
        { "network", [] { return ::socket(AF_INET, SOCK_STREAM, 0); } },
        { "local sockets", [] { return ::socket(AF_UNIX, SOCK_STREAM, 0); } },
        { "program", [] { return ::execl("/bin/true", "true", nullptr); } },
        { "process", [] { return ::fork(); } },
        { "process by other call", [] { return ::syscall(SYS_vfork); } },
        { "signal", [] { return ::kill(::getppid(), 0); } },
        { "signal to a thread", [] { return ::syscall(SYS_tgkill, ::getppid(), ::getppid(), 0); } },
        { "watch a process", [] { return ::ptrace(PTRACE_ATTACH, ::getppid(), 0, 0); } },
        { "others' limits",
          [] { return ::syscall(SYS_prlimit64, ::getppid(), RLIMIT_NOFILE, 0, 0); } },
        { "typing", [] { return ::ioctl(terminal, TIOCSTI, "x"); } },
    };
    for (const auto &attempt : attempts) {
        errno = 0;
        EXPECT_LT(attempt.attempt(), 0) << attempt.what;
        EXPECT_EQ(errno, EPERM) << attempt.what;
    }
}

TEST(Confinement, LeavesWhatDecodingNeeds)
{
    const int file = ::open((folder + "/file").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_GE(file, 0);
    bool ran = false;
    std::thread([&] { ran = true; }).join();
    EXPECT_TRUE(ran);
    EXPECT_GE(::memfd_create("picture", MFD_CLOEXEC), 0);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_EQ(::mmap(nullptr, 4UL << 30, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0),
              MAP_FAILED);
#endif
}

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    folder = ::getenv("TMPDIR") != nullptr ? ::getenv("TMPDIR") : "/tmp";
    folder += "/vantle-confinement-XXXXXX";
    if (::mkdtemp(folder.data()) == nullptr)
        return 2;
    ::close(::open((folder + "/file").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    // The folder outlives the confined process, whose parent removes it.
    const pid_t child = ::fork();
    if (child == 0) {
        if (!confine())
            return 3;
        return RUN_ALL_TESTS();
    }
    int status = 1;
    ::waitpid(child, &status, 0);
    ::unlink((folder + "/file").c_str());
    ::rmdir(folder.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
