#pragma once

#include "base/MainQueue.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <utility>

/// Threads for looking at files, some for each mount, so that one which never
/// answers holds nothing up but itself: not the other mounts, however a path leads
/// to it. Work that hangs at the end of the program is left behind. Any thread.
class FileLanes
{
public:
    explicit FileLanes(const QByteArray &mountTable = "/proc/self/mountinfo");
    ~FileLanes();
    FileLanes(const FileLanes &) = delete;
    FileLanes &operator=(const FileLanes &) = delete;

    /// By the path alone, links in it not followed.
    bool isRemote(const QByteArray &path);
    /// Begins nothing any more; false where work hangs. It goes on using what it has.
    bool end();
    void run(const QByteArray &path, std::function<void()> work);

    /// Has a look at a file, and then tells the main thread what came of it. Neither happens where
    /// what `alive` stands for has gone; the queue need not be there then. `look` returns what can
    /// be copied; `then` may own what belongs to the main thread.
    template<typename Look, typename Then>
    void look(const QByteArray &path, MainQueue &queue, const std::shared_ptr<int> &alive,
              Look look, Then then)
    {
        run(path,
            [&queue, alive = std::weak_ptr(alive), look = std::move(look),
             then = std::move(then)]() mutable {
                if (alive.expired())
                    return;
                auto result = look();
                if (alive.expired()) // It may have hung until then.
                    return;
                queue.postFor(alive,
                              [result = std::move(result), then = std::move(then)]() mutable {
                                  then(std::move(result));
                              });
            });
    }

private:
    class Lanes;

    std::shared_ptr<Lanes> m_lanes; // Work that looks for its lane has it too.
};
