#include "confined/Confinement.h"

#include <seccomp.h>

#include <cerrno>
#include <initializer_list>
#include <memory>
#include <type_traits>

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// By name: one that the library is too old to know is not allowed.
using Names = std::initializer_list<const char *>;

constexpr Names always {
    // Memory.
    "brk", "mmap", "mmap2", "munmap", "mremap", "mprotect", "madvise", "mincore", "membarrier",
    "mseal", "pkey_alloc", "pkey_free", "pkey_mprotect",
    // What is open.
    "read", "pread64", "readv", "preadv", "preadv2", "write", "pwrite64", "writev", "pwritev",
    "pwritev2", "lseek", "_llseek", "fstat", "fstat64", "fadvise64", "fadvise64_64",
    "arm_fadvise64_64", "readahead", "dup", "dup2", "dup3", "close", "close_range", "getdents",
    "getdents64", "fstatfs", "fstatfs64",
    // What stands in the file tree.
    "stat", "stat64", "lstat", "lstat64", "newfstatat", "fstatat64", "statx", "access", "faccessat",
    "faccessat2", "readlink", "readlinkat", "getcwd", "statfs", "statfs64",
    // Time.
    "clock_gettime", "clock_gettime64", "clock_getres", "clock_getres_time64", "clock_nanosleep",
    "clock_nanosleep_time64", "nanosleep", "gettimeofday", "time", "times",
    // The process itself.
    "getpid", "gettid", "getppid", "getpgrp", "getpgid", "getsid", "getuid", "geteuid", "getgid",
    "getegid", "getuid32", "geteuid32", "getgid32", "getegid32", "getresuid", "getresgid",
    "getgroups", "getrusage", "getrlimit", "ugetrlimit", "sysinfo", "uname", "getcpu",
    "getpriority", "getrandom", "arch_prctl", "set_thread_area", "set_tls", "cacheflush", "capget",
    "sched_yield", "sched_getaffinity", "sched_getparam", "sched_getscheduler",
    "sched_get_priority_max", "sched_get_priority_min", "set_tid_address", "set_robust_list",
    "get_robust_list", "rseq", "futex", "futex_time64", "futex_waitv", "futex_wait", "futex_wake",
    "futex_requeue", "exit", "exit_group", "restart_syscall", "riscv_flush_icache", "riscv_hwprobe",
    // Its own signals.
    "rt_sigaction", "rt_sigprocmask", "rt_sigpending", "rt_sigreturn", "sigreturn", "sigaltstack",
    "rt_sigsuspend", "rt_sigtimedwait", "rt_sigtimedwait_time64",
    // Waiting for what is open.
    "poll", "ppoll", "ppoll_time64", "select", "_newselect", "pselect6", "pselect6_time64",
    "sendmsg", "recvmsg", "recvfrom", "recv", "eventfd2", "eventfd"
};

constexpr Names eventLoop { "epoll_create",
                            "epoll_create1",
                            "epoll_ctl",
                            "epoll_wait",
                            "epoll_pwait",
                            "epoll_pwait2",
                            "pipe",
                            "pipe2",
                            "timerfd_create",
                            "timerfd_settime",
                            "timerfd_settime64",
                            "timerfd_gettime",
                            "getsockopt",
                            "setsockopt",
                            "getsockname",
                            "getpeername",
                            "shutdown",
                            "send" };

/// Where these reach is the file tree's business.
constexpr Names program { "execve",    "execveat", "fork",      "vfork",      "wait4",
                          "waitpid",   "waitid",   "open",      "openat",     "creat",
                          "mkdir",     "mkdirat",  "rmdir",     "unlink",     "unlinkat",
                          "rename",    "renameat", "renameat2", "ftruncate",  "ftruncate64",
                          "fallocate", "fsync",    "fdatasync", "flock",      "umask",
                          "chdir",     "fchdir",   "sendfile",  "sendfile64", "copy_file_range" };

/// Landlock does not see them. Programs make much of their failure, and need none of them.
constexpr Names pretended {
    "chmod",  "fchmod",   "fchmodat", "fchmodat2", "chown",     "fchown",
    "lchown", "fchownat", "utime",    "utimes",    "futimesat", "utimensat"
};

class Filter
{
public:
    Filter()
        : m_filter(seccomp_init(SCMP_ACT_ERRNO(ENOSYS)), &seccomp_release)
    {
        m_done = m_filter && seccomp_attr_set(m_filter.get(), SCMP_FLTATR_CTL_TSYNC, 1) == 0
            && seccomp_attr_set(m_filter.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_ERRNO(ENOSYS))
                == 0;
        if (m_filter) // A tree of numbers; a list where the library is too old for it.
            seccomp_attr_set(m_filter.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2);
    }
    void add(uint32_t action, const char *name, auto... conditions)
    {
        const int call = seccomp_syscall_resolve_name(name);
        if (call != __NR_SCMP_ERROR && m_done)
            m_done = seccomp_rule_add(m_filter.get(), action, call, sizeof...(conditions),
                                      conditions...)
                == 0;
    }
    void allow(const char *name, auto... conditions) { add(SCMP_ACT_ALLOW, name, conditions...); }
    void allowAll(const Names &names)
    {
        for (const char *const name : names)
            allow(name);
    }
    bool load() { return m_done && seccomp_load(m_filter.get()) == 0; }

private:
    std::unique_ptr<std::remove_pointer_t<scmp_filter_ctx>, decltype(&seccomp_release)> m_filter;
    bool m_done = false;
};

/// Conditions look at the lower half where the kernel does.
constexpr scmp_datum_t word = 0xffffffff;

void allowSome(Filter &filter)
{
    // No signal from a descriptor to whom it likes: neither an owner nor O_ASYNC.
    for (const int command : { F_DUPFD, F_DUPFD_CLOEXEC, F_GETFD, F_SETFD, F_GETFL }) {
        const auto isCommand
            = SCMP_A1(SCMP_CMP_MASKED_EQ, word, static_cast<scmp_datum_t>(command));
        filter.allow("fcntl", isCommand);
        filter.allow("fcntl64", isCommand);
    }
    for (const char *const name : { "fcntl", "fcntl64" })
        filter.allow(name, SCMP_A1(SCMP_CMP_MASKED_EQ, word, F_SETFL),
                     SCMP_A2(SCMP_CMP_MASKED_EQ, O_ASYNC, 0));
    for (const unsigned request : { FIONREAD, FIONBIO, TCGETS })
        filter.allow("ioctl", SCMP_A1(SCMP_CMP_MASKED_EQ, word, request));
    // Names of threads and of memory. Not the signal that comes when the program ends.
    constexpr scmp_datum_t nameOfMemory = 0x53564d41;
    for (const scmp_datum_t option :
         { scmp_datum_t { PR_SET_NAME }, scmp_datum_t { PR_GET_NAME }, nameOfMemory })
        filter.allow("prctl", SCMP_A0(SCMP_CMP_MASKED_EQ, word, option));
    filter.allow("prlimit64", SCMP_A0(SCMP_CMP_EQ, 0), SCMP_A2(SCMP_CMP_EQ, 0)); // To be told.
    filter.allow("sendto", SCMP_A4(SCMP_CMP_EQ, 0)); // To whom it is connected.
}

void allowReading(Filter &filter)
{
    constexpr scmp_datum_t writing = O_ACCMODE | O_CREAT | O_TRUNC | (O_TMPFILE & ~O_DIRECTORY);
    filter.allow("open", SCMP_A1(SCMP_CMP_MASKED_EQ, writing, 0));
    filter.allow("openat", SCMP_A2(SCMP_CMP_MASKED_EQ, writing, 0));
}

}

bool Confined::allowOnly(Calls calls)
{
    Filter filter;
    filter.allowAll(always);
    allowSome(filter);
    // Where clone3 is missing, threads are made by clone, whose flags can be looked at.
    if (calls == Calls::Program) {
        constexpr scmp_datum_t newNamespaces = CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS
            | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;
        filter.allow("clone", SCMP_A0(SCMP_CMP_MASKED_EQ, newNamespaces, 0));
        filter.allowAll(program);
        for (const char *const name : pretended)
            filter.add(SCMP_ACT_ERRNO(0), name);
    } else {
        filter.allow("clone", SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD));
        allowReading(filter);
        // By a signal to itself a process tells of its own end.
        filter.allow("tgkill",
                     SCMP_A0(SCMP_CMP_MASKED_EQ, word, static_cast<scmp_datum_t>(::getpid())));
    }
    if (calls != Calls::Decoding) {
        filter.allowAll(eventLoop);
        // Pairs of datagrams could be sent to any socket that has a path.
        for (const int type : { SOCK_STREAM, SOCK_SEQPACKET })
            filter.allow("socketpair", SCMP_A0(SCMP_CMP_MASKED_EQ, word, AF_UNIX),
                         SCMP_A1(SCMP_CMP_MASKED_EQ, 0xf, static_cast<scmp_datum_t>(type)));
    }
    return filter.load();
}
