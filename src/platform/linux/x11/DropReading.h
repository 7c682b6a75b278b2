#pragma once

#include "platform/DropTarget.h"
#include "platform/linux/x11/SelectionReader.h"

#include <QStringList>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

class MainQueue;

/// Reads one drop, or what the clipboard holds, on a thread of its own and makes
/// its objects. The thread ends when nobody holds an object any more and every load
/// has been answered.
class DropReading : public std::enable_shared_from_this<DropReading>
{
public:
    enum class Gain { Nothing, Something };
    struct Listener
    {
        std::function<void(const ItemProviders &)> onObjects; // Once at most.
        std::function<void(Gain)> onEnded; // After everything else.
    };

    struct Drop
    {
        QStringList types; // As the drag has announced them.
        quint32 time = 0;
    };

    /// Without a drop it is the clipboard that is read. Both calls of the listener come on the
    /// main thread.
    DropReading(MainQueue &queue, std::optional<Drop> drop, double secondsAtMost,
                Listener listener);

    void start();
    /// Answers every open load with nothing. Nothing is called from now on.
    void giveUp();
    /// Something of the drop has been taken.
    void gained();
    /// Whether the thread has ended, after waiting at most that long for it.
    bool waitForEnd(std::chrono::milliseconds limit);

    /// Has the thread read something. The completion is called once: with what
    /// was read, or with nothing.
    template<typename T>
    void load(std::function<std::optional<T>(SelectionReader &)> read,
              std::function<void(std::optional<T>)> completion)
    {
        // Whoever is first takes the completion away from the other.
        struct Answer
        {
            std::mutex mutex;
            std::function<void(std::optional<T>)> completion;
            void give(std::optional<T> value)
            {
                std::unique_lock lock(mutex);
                const auto taken = std::exchange(completion, nullptr);
                lock.unlock();
                if (taken)
                    taken(std::move(value));
            }
        };
        auto answer = std::make_shared<Answer>();
        answer->completion = std::move(completion);
        enqueue([answer, read = std::move(read), self = weak_from_this()](SelectionReader *reader) {
            auto value = reader ? read(*reader) : std::nullopt;
            if (const auto reading = value ? self.lock() : nullptr)
                reading->gained();
            answer->give(std::move(value));
        });
    }

private:
    using Job = std::function<void(SelectionReader *)>; // Without a reader it gives up.

    void enqueue(Job job);
    void run();
    void runJobs(SelectionReader &reader);
    ItemProviders objects(SelectionReader &reader);
    void post(std::function<void()> task);

    MainQueue &m_queue;
    const std::optional<Drop> m_drop;
    const SelectionReader::Clock::time_point m_deadline;
    Listener m_listener; // Main thread.

    std::mutex m_mutex; // For everything below.
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    Job m_current;
    Gain m_gain = Gain::Nothing;
    bool m_closed = false; // No object is left.
    bool m_givenUp = false;
    bool m_ended = false;
};
