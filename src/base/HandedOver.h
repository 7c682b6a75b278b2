#pragma once

#include <functional>
#include <mutex>
#include <utility>

/// Work for a pool of the toolkit's. The toolkit sees to it that what the work was given is there
/// for the thread that does it, but by locks that ThreadSanitizer does not know; this one it knows.
inline std::function<void()> handedOver(std::function<void()> work)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    return [work = std::move(work)] {
        mutex.lock();
        mutex.unlock();
        work();
    };
}
