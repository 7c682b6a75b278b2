// The attacker inside: locks itself up as each kind of process does, and then tries to get out, by
// all that a hostile file could make it do.
//   confinement_tests VANTLE-CONFINED
#include "confined/Confinement.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <thread>

#include <fcntl.h>
#include <mqueue.h>
#include <sched.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/msg.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/timex.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using Confined::Calls;
using Confined::Opening;

// Numbers that the headers of a system may lack.
constexpr long openat2Call = 437;
constexpr long fchmodat2Call = 452;
constexpr int typeIntoTerminal = 0x5412; // TIOCSTI, which only old kernels allow to everybody.
constexpr size_t mostMemory = 2048UL << 20;

Calls kind = Calls::Decoding;
// Made before: a folder with the file that is worked on, and a folder for what is written.
std::string inputFile;
std::string outputFolder;
// Out of reach.
std::string foreignFile;
std::string foreignFolder;
int given = -1; // The input, open for reading.
int terminal = -1;

bool isProgram()
{
    return kind == Calls::Program;
}

long call(auto... arguments)
{
    return ::syscall(arguments...);
}

}

TEST(Confinement, NothingOnTheListGetsOut)
{
    const char *const file = foreignFile.c_str();
    const char *const folder = foreignFolder.c_str();
    const std::string made = foreignFolder + "/made";
    const char *const other = made.c_str();
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, "/run/dbus/system_bus_socket", sizeof address.sun_path - 1);
    f_owner_ex owner { F_OWNER_PID, ::getppid() };
    timespec longAgo[2] = {};
    timex clock = {};
    const uint64_t how[3] = { O_WRONLY, 0, 0 };
    const unsigned long processors = 1;
    const rlimit more { 4096, 4096 };
    iovec part { longAgo, sizeof longAgo };
    const std::string again = "/proc/self/fd/" + std::to_string(given);
    enum Where { Everywhere, WithLandlock, NotInPrograms, Pretended };
    const struct
    {
        const char *what;
        std::function<long()> attempt;
        Where where = Everywhere;
    } attempts[] = {
        // Files.
        { "read the user's file", [&] { return ::open(file, O_RDONLY); }, WithLandlock },
        { "list the user's folder", [&] { return ::open(folder, O_DIRECTORY); }, WithLandlock },
        { "read the users' names", [] { return ::open("/etc/passwd", O_RDONLY); }, WithLandlock },
        { "read another process's memory", [] { return ::open("/proc/1/mem", O_RDONLY); },
          WithLandlock },
        { "write", [&] { return ::open(file, O_WRONLY); } },
        { "read and write", [&] { return ::open(file, O_RDWR); } },
        { "truncate by opening", [&] { return ::open(file, O_RDONLY | O_TRUNC); } },
        { "open what was given for writing", [&] { return ::open(again.c_str(), O_RDWR); } },
        { "create", [&] { return ::open(other, O_RDONLY | O_CREAT, 0600); } },
        { "create without a name", [&] { return ::open(folder, O_TMPFILE | O_RDWR, 0600); } },
        { "open by the newer call",
          [&] { return call(openat2Call, AT_FDCWD, file, how, sizeof how); } },
        { "create by the older call", [&] { return ::creat(other, 0600); } },
        { "truncate", [&] { return ::truncate(file, 0); } },
        { "unlink", [&] { return ::unlink(file); } },
        { "rename", [&] { return ::rename(file, other); } },
        { "link", [&] { return ::link(inputFile.c_str(), other); } },
        { "link into the output", [&] { return ::link(file, (outputFolder + "/link").c_str()); } },
        { "symbolic link", [&] { return ::symlink(file, (outputFolder + "/s").c_str()); } },
        { "folder", [&] { return ::mkdir(other, 0700); } },
        { "pipe with a name", [&] { return ::mkfifo(other, 0600); } },
        { "permissions", [&] { return ::chmod(file, 0777); }, Pretended },
        { "permissions by descriptor", [] { return ::fchmod(given, 0777); }, Pretended },
        { "permissions by the newer call",
          [&] { return call(fchmodat2Call, AT_FDCWD, file, 0777, 0); }, Pretended },
        { "owner", [&] { return ::chown(file, 1, 1); }, Pretended },
        { "times", [&] { return ::utimensat(AT_FDCWD, file, longAgo, 0); }, Pretended },
        { "attributes", [&] { return ::setxattr(file, "user.x", "x", 1, 0); } },
        { "watch a folder", [] { return ::inotify_init1(0); } },
        { "mount", [&] { return ::mount("none", folder, "tmpfs", 0, nullptr); } },
        { "another root", [&] { return ::chroot(folder); } },
        { "open by handle", [] { return call(SYS_open_by_handle_at, AT_FDCWD, "", O_RDONLY); } },
        { "take a lease", [] { return ::fcntl(given, F_SETLEASE, F_RDLCK); } },
        // Sockets.
        { "the network", [] { return ::socket(AF_INET, SOCK_STREAM, 0); } },
        { "local sockets", [] { return ::socket(AF_UNIX, SOCK_STREAM, 0); } },
        { "the kernel's sockets", [] { return ::socket(AF_NETLINK, SOCK_RAW, 0); } },
        { "a datagram to a named socket",
          [&] {
              int pair[2] = { -1, -1 };
              ::socketpair(AF_UNIX, SOCK_DGRAM, 0, pair);
              return ::sendto(pair[0], "x", 1, 0, reinterpret_cast<sockaddr *>(&address),
                              sizeof address);
          } },
        // Other processes.
        { "signal", [] { return ::kill(::getppid(), 0); } },
        { "signal to a thread", [] { return call(SYS_tgkill, ::getppid(), ::getppid(), 0); } },
        { "signal with a value", [] { return ::sigqueue(::getppid(), 0, {}); } },
        { "signal by a descriptor's owner", [] { return ::fcntl(0, F_SETOWN, ::getppid()); } },
        { "signal by its newer owner", [&] { return ::fcntl(0, F_SETOWN_EX, &owner); } },
        { "signal of its choice", [] { return ::fcntl(0, F_SETSIG, SIGKILL); } },
        { "signals when it is ready", [] { return ::fcntl(0, F_SETFL, O_ASYNC); } },
        { "live on without the program", [] { return ::prctl(PR_SET_PDEATHSIG, 0); } },
        { "leave the session", [] { return ::setsid(); } },
        { "leave the group", [] { return ::setpgid(0, ::getppid()); } },
        { "a handle of a process", [] { return call(SYS_pidfd_open, ::getppid(), 0); } },
        { "watch a process", [] { return ::ptrace(PTRACE_ATTACH, ::getppid(), 0, 0); } },
        { "read a process",
          [&] { return ::process_vm_readv(::getppid(), &part, 1, &part, 1, 0); } },
        { "others' limits",
          [] { return call(SYS_prlimit64, ::getppid(), RLIMIT_NOFILE, nullptr, nullptr); },
          NotInPrograms },
        { "others' priority", [] { return ::setpriority(PRIO_PROCESS, ::getppid(), 0); } },
        { "others' processors",
          [&] {
              return call(SYS_sched_setaffinity, ::getppid(), sizeof processors, &processors);
          } },
        { "program", [] { return ::execl("/bin/true", "true", nullptr); }, NotInPrograms },
        { "process", [] { return ::fork(); }, NotInPrograms },
        { "namespaces", [] { return ::unshare(CLONE_NEWUSER); } },
        { "namespaces of a new process",
          [] { return call(SYS_clone, CLONE_NEWUSER | SIGCHLD, 0, 0, 0, 0); } },
        // What stays behind.
        { "shared memory", [] { return ::shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600); } },
        { "messages", [] { return ::msgget(IPC_PRIVATE, IPC_CREAT | 0600); } },
        { "semaphores", [] { return ::semget(IPC_PRIVATE, 1, IPC_CREAT | 0600); } },
        { "queue with a name",
          [] { return ::mq_open("/vantle-x", O_CREAT | O_RDWR, 0600, nullptr); } },
        { "memory without a name", [] { return ::memfd_create("x", 0); } },
        { "keys", [] { return call(SYS_add_key, "user", "x", "x", 1, -3); } },
        // Terminals.
        { "the terminal", [] { return ::open("/dev/tty", O_RDWR); } },
        { "typing", [] { return ::ioctl(terminal, typeIntoTerminal, "x"); } },
        { "a terminal of its own", [] { return ::ioctl(terminal, TIOCSCTTY, 0); } },
        { "a new terminal", [] { return ::open("/dev/ptmx", O_RDWR); } },
        // The machine.
        { "time", [&] { return ::clock_settime(CLOCK_REALTIME, longAgo); } },
        { "pace of time", [&] { return ::adjtimex(&clock); } },
        { "name", [] { return ::sethostname("x", 1); } },
        { "programs in the kernel", [] { return call(SYS_bpf, 0, nullptr, 0); } },
        { "counters", [] { return call(SYS_perf_event_open, nullptr, 0, -1, -1, 0); } },
        { "rings", [] { return call(SYS_io_uring_setup, 1, nullptr); } },
        { "faults", [] { return call(SYS_userfaultfd, 0); } },
        { "modules", [] { return call(SYS_init_module, nullptr, 0, ""); } },
        { "more of its own limits", [&] { return ::setrlimit(RLIMIT_NOFILE, &more); } },
    // Memory and descriptors.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        { "gigabytes",
          [] {
              void *const at = ::mmap(nullptr, 8UL << 30, PROT_READ,
                                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
              return at == MAP_FAILED ? -1L : 0L;
          } },
#endif
        { "any number of descriptors",
          [] {
              int last = 0;
              while (last >= 0 && last < 1000)
                  last = ::dup(given);
              const int why = errno;
              ::close_range(static_cast<unsigned>(terminal) + 1, ~0U, 0);
              errno = why;
              return last;
          } },
    };
    static_assert(std::size(attempts) >= 40);
    for (const auto &attempt : attempts) {
        if ((attempt.where == WithLandlock && Confined::landlockVersion() == 0)
            || (attempt.where == NotInPrograms && isProgram()))
            continue;
        errno = 0;
        const long got = attempt.attempt();
        const int why = errno;
        if (attempt.where == Pretended && isProgram()) {
            EXPECT_EQ(got, 0) << attempt.what; // That it had no effect is seen from outside.
            continue;
        }
        EXPECT_LT(got, 0) << attempt.what;
        // What is refused for another reason was not refused by the confinement.
        EXPECT_TRUE(why == ENOSYS || why == EACCES || why == EPERM || why == ENOMEM || why == EMFILE
                    || why == EXDEV)
            << attempt.what << ": " << std::strerror(why);
    }
}

TEST(Confinement, WhatIsNeededStays)
{
    char byte = 0;
    EXPECT_EQ(::pread(given, &byte, 1, 0), 1);
    EXPECT_GE(::open("/usr/share", O_RDONLY | O_DIRECTORY | O_CLOEXEC), 0);
    bool ran = false;
    std::thread([&] { ran = true; }).join();
    EXPECT_TRUE(ran);
    if (isProgram()) {
        EXPECT_GE(::open(inputFile.c_str(), O_RDONLY | O_CLOEXEC), 0);
        const std::string result = outputFolder + "/result";
        EXPECT_GE(::open((result + "~").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600), 0);
        EXPECT_EQ(::rename((result + "~").c_str(), result.c_str()), 0);
        EXPECT_EQ(std::system("/bin/true"), 0);
    }
}

namespace {

void writeFile(const std::string &path)
{
    const int file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    EXPECT_EQ(::write(file, "content", 7), 7);
    ::close(file);
}

/// In a process that ends with the tests of that kind.
int attack(const char *confined)
{
    given = ::open(inputFile.c_str(), O_RDONLY | O_CLOEXEC);
    terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (isProgram()) {
        ::setsid();
        const std::string self = std::filesystem::canonical("/proc/self/exe");
        ::execl(confined, confined, inputFile.c_str(), outputFolder.c_str(), self.c_str(), "inside",
                foreignFolder.c_str(), nullptr);
        return 4;
    }
    // Some for the report, which may go to a file.
    if (!Confined::limit({ .memory = mostMemory, .fileSize = 1 << 20 })
        || !Confined::shutFileTree({ { inputFile } }, Opening::For::Reading)
        || !Confined::allowOnly(kind))
        return 3;
    return RUN_ALL_TESTS();
}

}

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    const bool inside = argc == 3 && std::string_view(argv[1]) == "inside";
    std::string root = inside ? argv[2] : "/tmp/vantle-confinement-XXXXXX";
    if (!inside && ::mkdtemp(root.data()) == nullptr)
        return 2;
    foreignFolder = root;
    foreignFile = root + "/foreign";
    inputFile = root + "/input";
    outputFolder = root + "/output";
    if (inside) {
        kind = Calls::Program;
        given = ::open(inputFile.c_str(), O_RDONLY | O_CLOEXEC);
        terminal = ::dup(given);
        return RUN_ALL_TESTS();
    }
    writeFile(foreignFile);
    writeFile(inputFile);
    ::mkdir(outputFolder.c_str(), 0700);
    int failures = 0;
    for (const Calls each : { Calls::Decoding, Calls::Playing, Calls::Program }) {
        kind = each;
        if (isProgram() && Confined::landlockVersion() == 0)
            continue; // None is run there.
        std::printf("Confinement %d\n", static_cast<int>(each));
        std::fflush(stdout);
        const pid_t child = ::fork();
        if (child == 0)
            return attack(argv[1]);
        int status = 1;
        ::waitpid(child, &status, 0);
        failures += status != 0;
        for (const std::string &path : { foreignFile, inputFile }) {
            struct stat after = {};
            const bool same = ::stat(path.c_str(), &after) == 0 && after.st_size == 7
                && (after.st_mode & 0777) == 0600 && after.st_uid == ::getuid()
                && after.st_mtim.tv_sec > 1'000'000'000 && after.st_nlink == 1;
            if (!same)
                std::printf("%s was changed\n", path.c_str());
            failures += !same;
        }
    }
    std::filesystem::remove_all(root);
    return failures;
}
