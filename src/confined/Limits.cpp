#include "confined/Confinement.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool usesShadowMemory = true; // Terabytes of addresses.
#else
constexpr bool usesShadowMemory = false;
#endif

bool set(__rlimit_resource_t what, rlim_t most)
{
    const rlimit both { most, most };
    return ::setrlimit(what, &both) == 0;
}

}

bool Confined::limit(const Limits &limits)
{
    return (usesShadowMemory || set(RLIMIT_AS, limits.memory)) && set(RLIMIT_CORE, 0)
        && set(RLIMIT_NOFILE, limits.files) && set(RLIMIT_FSIZE, limits.fileSize)
        && set(RLIMIT_MSGQUEUE, 0) && set(RLIMIT_MEMLOCK, 0)
        && (limits.processorTime == 0 || set(RLIMIT_CPU, limits.processorTime))
        && ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_DUMPABLE, 0) == 0;
}

void Confined::closeOthers(int kept)
{
    ::close_range(STDERR_FILENO + 1, static_cast<unsigned>(kept) - 1, 0);
    ::close_range(static_cast<unsigned>(kept) + 1, ~0U, 0);
}
