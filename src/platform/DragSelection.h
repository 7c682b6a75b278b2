#pragma once

#include <functional>

/// What the session's running drag carries, whoever its source is. Main thread.
class DragSelection
{
public:
    virtual ~DragSelection() = default;

    /// Grows whenever another program announces a drag. Drags of this program
    /// do not count.
    virtual int changeCount() const = 0;
    /// Whether the announced drag carries files of a file system. The source is
    /// asked in the background: false until it has answered.
    virtual bool holdsFileUrls() const = 0;

    /// Called when a source has answered the question of holdsFileUrls().
    std::function<void()> onAnswer;
};
