#pragma once

#include <string>
#include <vector>

#include <unistd.h>

/// What a confined process may open by path, by Landlock (Linux 5.13).
namespace Confined {

inline constexpr long createRuleset = 444; // The call's number on every architecture.
/// The newest set of Landlock's rules that the kernel knows; 0 where it has none.
inline int landlockVersion()
{
    constexpr unsigned askForVersion = 1;
    const long version = ::syscall(createRuleset, nullptr, 0, askForVersion);
    return version > 0 ? static_cast<int>(version) : 0;
}

struct Opening
{
    enum class For { Reading, Running, Writing }; // Each with what stands before it.

    std::string path; // What is not there is left out. A folder with all below it.
    For what = For::Reading;
};

/// Leaves those openings, and what the system has of libraries, fonts and time
/// zones; `libraries` says whether what lies there may be run. Where the kernel has
/// no Landlock it does nothing and returns true.
bool shutFileTree(const std::vector<Opening> &openings, Opening::For libraries);

}
