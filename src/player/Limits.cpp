#include "player/Limits.h"

#include <seccomp.h>

#include <cerrno>
#include <memory>
#include <type_traits>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>

namespace {

// Of address space, bytes: codecs keep many large pictures, and drivers map much.
constexpr rlim_t mostMemory = 4096UL << 20;
constexpr rlim_t mostFiles = 256;
#ifdef __SANITIZE_ADDRESS__
constexpr bool usesShadowMemory = true; // Terabytes of addresses.
#else
constexpr bool usesShadowMemory = false;
#endif

bool limit(__rlimit_resource_t what, rlim_t most)
{
    const rlimit both { most, most };
    return ::setrlimit(what, &both) == 0;
}

}

bool limitPlayer()
{
    if ((!usesShadowMemory && !limit(RLIMIT_AS, mostMemory)) || !limit(RLIMIT_CORE, 0)
        || !limit(RLIMIT_NOFILE, mostFiles) || ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return false;
    const std::unique_ptr<std::remove_pointer_t<scmp_filter_ctx>, decltype(&seccomp_release)>
        filter(seccomp_init(SCMP_ACT_ALLOW), &seccomp_release);
    if (!filter)
        return false;
    const auto deny = SCMP_ACT_ERRNO(EPERM);
    bool done = true;
    const auto add = [&](uint32_t action, int call, auto... conditions) {
        done = seccomp_rule_add(filter.get(), action, call, sizeof...(conditions), conditions...)
                == 0
            && done;
    };
    // Threads are made by clone, whose flags stand in a register; with clone3 they do not, and the
    // library falls back where it is missing.
    add(SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3));
    add(deny, SCMP_SYS(clone), SCMP_A0(SCMP_CMP_MASKED_EQ, 0x00010000 /* CLONE_THREAD */, 0));
    add(deny, SCMP_SYS(socket), SCMP_A0(SCMP_CMP_NE, AF_UNIX));
    // The sound server's client makes sure of its folder, which is there.
    add(SCMP_ACT_ERRNO(EEXIST), SCMP_SYS(mkdir));
    add(SCMP_ACT_ERRNO(EEXIST), SCMP_SYS(mkdirat));
    for (const unsigned flag : { O_CREAT, O_TRUNC }) {
        add(deny, SCMP_SYS(open), SCMP_A1(SCMP_CMP_MASKED_EQ, flag, flag));
        add(deny, SCMP_SYS(openat), SCMP_A2(SCMP_CMP_MASKED_EQ, flag, flag));
    }
    for (const int call : { SCMP_SYS(execve),
                            SCMP_SYS(execveat),
                            SCMP_SYS(fork),
                            SCMP_SYS(vfork),
                            SCMP_SYS(listen),
                            SCMP_SYS(ptrace),
                            SCMP_SYS(kill),
                            SCMP_SYS(tkill),
                            SCMP_SYS(unlink),
                            SCMP_SYS(unlinkat),
                            SCMP_SYS(rename),
                            SCMP_SYS(renameat),
                            SCMP_SYS(renameat2),
                            SCMP_SYS(rmdir),
                            SCMP_SYS(link),
                            SCMP_SYS(linkat),
                            SCMP_SYS(symlink),
                            SCMP_SYS(symlinkat),
                            SCMP_SYS(truncate),
                            SCMP_SYS(mknod),
                            SCMP_SYS(mknodat),
                            SCMP_SYS(mount),
                            SCMP_SYS(creat),
                            SCMP_SYS(io_uring_setup),
                            SCMP_SYS(bpf),
                            SCMP_SYS(process_vm_writev),
                            SCMP_SYS(process_vm_readv),
                            SCMP_SYS(pidfd_open),
                            SCMP_SYS(openat2),
                            SCMP_SYS(unshare),
                            SCMP_SYS(rt_sigqueueinfo) })
        add(deny, call);
    return done && seccomp_load(filter.get()) == 0;
}
