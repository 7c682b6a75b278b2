#pragma once

#include <system_error>
#include <thread>
#include <utility>

/// Begins work on a thread of its own that nobody waits for: it may hang for good, and has
/// all that it needs. False where no thread is to be had.
template<typename Work>
bool startDetached(Work work)
{
    try {
        std::thread(std::move(work)).detach();
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}
