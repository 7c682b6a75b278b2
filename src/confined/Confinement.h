#pragma once

#include "confined/FileTree.h"

#include <cstddef>

/// How a process that deals with other people's files locks itself up before it
/// sees the first one. In this order, since each step takes from the process what
/// the one before it needs: limit(), shutFileTree() while there is one thread,
/// whatever has to be opened by path or connected to, allowOnly(). A step that
/// fails returns false, and nothing may be decoded then. None can be undone.
namespace Confined {

/// Exit status of a process that the system does not let confine itself.
inline constexpr int unableStatus = 69;

struct Limits
{
    size_t memory = 0; // Bytes of address space.
    unsigned files = 64; // That may be open.
    size_t fileSize = 0; // Bytes that may be written to one file.
    unsigned processorTime = 0; // Seconds; 0 is no limit.
};
/// And no core files, and no privileges from programs that are started.
bool limit(const Limits &limits);

/// Closes all but the standard three and that one.
void closeOthers(int kept);

/// The calls of the kernel that are left; what is not listed is answered as by a
/// kernel that does not have it, by which libraries take another way.
enum class Calls {
    Decoding, // Reading files, memory, threads, and a socket that is there already.
    Playing, // And what an event loop and a sound server's connected client need.
    Program, // Another program of its own, which writes where the file tree is open for it.
};
/// For all threads of this process, and what it starts.
bool allowOnly(Calls calls);

}
