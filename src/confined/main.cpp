// Runs another program, such as a thumbnailer, where it reaches one file and one folder:
//   vantle-confined INPUT FOLDER PROGRAM ARGUMENTS...
// It leads a group of processes; who started it ends the group, and if that one is gone, it does.
#include "confined/Confinement.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace Confined;

constexpr Limits limits {
    .memory = 2048UL << 20, .files = 256, .fileSize = 64 << 20, .processorTime = 10
};
constexpr int niceness = 15;

std::string cacheFolder()
{
    const char *const cache = std::getenv("XDG_CACHE_HOME");
    const char *const home = std::getenv("HOME");
    return cache != nullptr ? cache : home != nullptr ? std::string(home) + "/.cache" : "";
}

int run(const std::string &input, const std::string &folder, char **command)
{
    using enum Opening::For;
    const std::string program = command[0];
    ::setpriority(PRIO_PROCESS, 0, niceness);
    ::setenv("TMPDIR", folder.c_str(), 1);
    closeOthers(STDERR_FILENO);
    if (!limit(limits)
        || !shutFileTree({ { input, Reading },
                           { folder, Writing },
                           { program, Running },
                           // Without which each run would look at all plug-ins.
                           { cacheFolder() + "/gstreamer-1.0", Reading } },
                         Running)
        || !allowOnly(Calls::Program)) {
        std::fputs("vantle-confined: cannot confine, runs nothing\n", stderr);
        return unableStatus;
    }
    ::execvp(command[0], command);
    return EXIT_FAILURE;
}

}

int main(int argc, char **argv)
{
    if (argc < 4)
        return EXIT_FAILURE;
    if (::getpgrp() == ::getpid()) {
        std::signal(SIGTERM, [](int) { ::kill(0, SIGKILL); });
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    }
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGTERM, SIG_DFL);
        return run(argv[1], argv[2], argv + 3);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child)
        return EXIT_FAILURE;
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}
