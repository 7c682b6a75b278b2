#include "confined/FileTree.h"

#include <cstdint>
#include <cstdlib>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>

namespace {

using Confined::Opening;

// By their numbers, since the headers of a system may be older than its kernel.
constexpr long addRule = 445;
constexpr long restrictSelf = 446;
constexpr int pathBeneath = 1;

constexpr uint64_t execute = 1 << 0;
constexpr uint64_t writeFile = 1 << 1;
constexpr uint64_t readFile = 1 << 2;
constexpr uint64_t readFolder = 1 << 3;
constexpr uint64_t removeFolder = 1 << 4;
constexpr uint64_t removeFile = 1 << 5;
constexpr uint64_t makeFolder = 1 << 7;
constexpr uint64_t makeFile = 1 << 8;
constexpr uint64_t truncateFile = 1 << 14;
constexpr uint64_t onFiles = execute | writeFile | readFile | truncateFile;

struct Ruleset
{
    uint64_t files;
    uint64_t network;
    uint64_t scopes;
};

struct PathRule
{
    uint64_t access;
    int32_t file;
} __attribute__((packed));

/// All that this version can deny.
Ruleset everything(int version)
{
    const int fileRights = version >= 5 ? 16 : version >= 3 ? 15 : version >= 2 ? 14 : 13;
    return { (uint64_t { 1 } << fileRights) - 1, // The lowest ones, added one after the other.
             version >= 4 ? 3U : 0U, // TCP: to listen, to connect.
             version >= 6 ? 3U : 0U }; // Sockets without a path and signals, to others.
}

uint64_t rights(Opening::For what)
{
    switch (what) {
    case Opening::For::Reading:
        return readFile | readFolder;
    case Opening::For::Running:
        return readFile | readFolder | execute;
    case Opening::For::Writing:
        return onFiles | readFolder | removeFolder | removeFile | makeFolder | makeFile;
    }
    return 0;
}

std::string folderOf(const char *variable, const char *belowHome)
{
    const char *const set = std::getenv(variable);
    if (set != nullptr && *set == '/')
        return set;
    const char *const home = std::getenv("HOME");
    return home != nullptr ? std::string(home) + belowHome : std::string();
}

std::vector<Opening> ofTheSystem(Opening::For libraries)
{
    using enum Opening::For;
    const std::string data = folderOf("XDG_DATA_HOME", "/.local/share");
    const std::string cache = folderOf("XDG_CACHE_HOME", "/.cache");
    const std::string config = folderOf("XDG_CONFIG_HOME", "/.config");
    std::vector<Opening> openings { { "/dev/null", Writing },
                                    { folderOf("", "/.fonts"), Reading },
                                    { data + "/fonts", Reading },
                                    { cache + "/fontconfig", Reading },
                                    { config + "/fontconfig", Reading } };
    // Where systems keep programs and libraries.
    for (const char *path :
         { "/usr", "/bin", "/lib", "/lib32", "/lib64", "/app", "/nix/store", "/gnu/store" })
        openings.push_back({ path, libraries });
    for (const char *path :
         { "/etc/fonts", "/etc/ld.so.cache", "/etc/localtime", "/etc/alternatives",
           "/var/cache/fontconfig", "/dev/zero", "/dev/urandom", "/proc/self", "/proc/cpuinfo",
           "/proc/meminfo", "/proc/stat", "/sys/devices/system/cpu" })
        openings.push_back({ path, Reading });
    return openings;
}

bool open(int ruleset, const Opening &opening, uint64_t known)
{
    if (opening.path.empty() || opening.path.front() != '/')
        return true;
    const int file = ::open(opening.path.c_str(), O_PATH | O_CLOEXEC);
    struct stat status = {};
    if (file < 0 || ::fstat(file, &status) != 0)
        return true;
    const uint64_t wanted = rights(opening.what) & known;
    const PathRule rule { S_ISDIR(status.st_mode) ? wanted : wanted & onFiles, file };
    const bool done = ::syscall(addRule, ruleset, pathBeneath, &rule, 0) == 0;
    ::close(file);
    return done;
}

}

bool Confined::shutFileTree(const std::vector<Opening> &openings, Opening::For libraries)
{
    const int version = landlockVersion();
    if (version == 0)
        return true;
    const Ruleset all = everything(version);
    const size_t size = version >= 6 ? sizeof all : version >= 4 ? 16 : 8;
    const int ruleset = static_cast<int>(::syscall(Confined::createRuleset, &all, size, 0));
    if (ruleset < 0)
        return false;
    bool done = true;
    for (const auto &group : { ofTheSystem(libraries), openings }) {
        for (const Opening &opening : group)
            done = open(ruleset, opening, all.files) && done;
    }
    done = done && ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && ::syscall(restrictSelf, ruleset, 0) == 0;
    ::close(ruleset);
    return done;
}
