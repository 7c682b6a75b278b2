#include "decoder/Confinement.h"

#include <seccomp.h>

#include <cerrno>
#include <memory>
#include <type_traits>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr rlim_t mostMemory = 2048UL << 20; // Of address space, bytes; libraries take 300 MB of it.
constexpr rlim_t mostFiles = 64;
#ifdef __SANITIZE_ADDRESS__
constexpr bool usesShadowMemory = true; // Terabytes of addresses.
#else
constexpr bool usesShadowMemory = false;
#endif

// Calls of kernels that are newer than the library: fchmodat2, setxattrat, removexattrat.
constexpr int newerCalls[] = { 452, 463, 466 };

bool limit(__rlimit_resource_t what, rlim_t most)
{
    const rlimit both { most, most };
    return ::setrlimit(what, &both) == 0;
}

}

bool confine()
{
    if ((!usesShadowMemory && !limit(RLIMIT_AS, mostMemory)) || !limit(RLIMIT_CORE, 0)
        || !limit(RLIMIT_NOFILE, mostFiles) || ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0
        || ::prctl(PR_SET_DUMPABLE, 0) != 0)
        return false;
    const std::unique_ptr<std::remove_pointer_t<scmp_filter_ctx>, decltype(&seccomp_release)>
        filter(seccomp_init(SCMP_ACT_ALLOW), &seccomp_release);
    if (!filter)
        return false;
    const auto deny = SCMP_ACT_ERRNO(EPERM);
    // Threads are made by clone, whose flags stand in a register; with clone3 they do not, and the
    // library falls back where it is missing.
    bool done = seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0
        && seccomp_rule_add(filter.get(), deny, SCMP_SYS(clone), 1,
                            SCMP_A0(SCMP_CMP_MASKED_EQ, 0x00010000 /* CLONE_THREAD */, 0))
            == 0;
    // The process's own limits are asked for by the same call.
    done
        = seccomp_rule_add(filter.get(), deny, SCMP_SYS(prlimit64), 1, SCMP_A0(SCMP_CMP_NE, 0)) == 0
        && done;
    // By signals a process tells of its own end alone.
    done = seccomp_rule_add(filter.get(), deny, SCMP_SYS(tgkill), 1,
                            SCMP_A0(SCMP_CMP_NE, static_cast<scmp_datum_t>(::getpid())))
            == 0
        && done;
    // Where the errors go may be the user's terminal, into which these would type.
    for (const unsigned request : { TIOCSTI, TIOCLINUX })
        done = seccomp_rule_add(filter.get(), deny, SCMP_SYS(ioctl), 1,
                                SCMP_A1(SCMP_CMP_MASKED_EQ, 0xffffffff, request))
                == 0
            && done;
    for (const int call : newerCalls)
        done = seccomp_rule_add(filter.get(), deny, call, 0) == 0 && done;
    for (const int call : { SCMP_SYS(execve),
                            SCMP_SYS(execveat),
                            SCMP_SYS(fork),
                            SCMP_SYS(vfork),
                            SCMP_SYS(socket),
                            SCMP_SYS(connect),
                            SCMP_SYS(bind),
                            SCMP_SYS(listen),
                            SCMP_SYS(ptrace),
                            SCMP_SYS(kill),
                            SCMP_SYS(tkill),
                            SCMP_SYS(unlink),
                            SCMP_SYS(unlinkat),
                            SCMP_SYS(rename),
                            SCMP_SYS(renameat),
                            SCMP_SYS(renameat2),
                            SCMP_SYS(mkdir),
                            SCMP_SYS(mkdirat),
                            SCMP_SYS(rmdir),
                            SCMP_SYS(link),
                            SCMP_SYS(linkat),
                            SCMP_SYS(symlink),
                            SCMP_SYS(symlinkat),
                            SCMP_SYS(chmod),
                            SCMP_SYS(fchmod),
                            SCMP_SYS(fchmodat),
                            SCMP_SYS(chown),
                            SCMP_SYS(fchown),
                            SCMP_SYS(lchown),
                            SCMP_SYS(fchownat),
                            SCMP_SYS(truncate),
                            SCMP_SYS(mknod),
                            SCMP_SYS(mknodat),
                            SCMP_SYS(mount),
                            SCMP_SYS(umount2),
                            SCMP_SYS(setxattr),
                            SCMP_SYS(fsetxattr),
                            SCMP_SYS(utimensat),
                            SCMP_SYS(creat),
                            SCMP_SYS(io_uring_setup),
                            SCMP_SYS(process_vm_readv),
                            SCMP_SYS(process_vm_writev),
                            SCMP_SYS(bpf),
                            SCMP_SYS(perf_event_open),
                            SCMP_SYS(keyctl),
                            SCMP_SYS(unshare),
                            SCMP_SYS(pidfd_open),
                            SCMP_SYS(pidfd_getfd),
                            SCMP_SYS(pidfd_send_signal),
                            SCMP_SYS(rt_sigqueueinfo),
                            SCMP_SYS(rt_tgsigqueueinfo),
                            SCMP_SYS(lsetxattr),
                            SCMP_SYS(removexattr),
                            SCMP_SYS(lremovexattr),
                            SCMP_SYS(fremovexattr),
                            SCMP_SYS(utime),
                            SCMP_SYS(utimes),
                            SCMP_SYS(futimesat),
                            SCMP_SYS(setns),
                            SCMP_SYS(openat2) })
        done = seccomp_rule_add(filter.get(), deny, call, 0) == 0 && done;
    for (const unsigned flag : { O_WRONLY, O_RDWR, O_CREAT, O_TRUNC }) {
        done = seccomp_rule_add(filter.get(), deny, SCMP_SYS(open), 1,
                                SCMP_A1(SCMP_CMP_MASKED_EQ, flag, flag))
                == 0
            && seccomp_rule_add(filter.get(), deny, SCMP_SYS(openat), 1,
                                SCMP_A2(SCMP_CMP_MASKED_EQ, flag, flag))
                == 0
            && done;
    }
    return done && seccomp_load(filter.get()) == 0;
}
