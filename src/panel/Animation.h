#pragma once

#include "base/MainQueue.h"

#include <functional>
#include <memory>

enum class AnimationCurve {
    EaseIn,
    EaseOut,
    Spring, // Comes to rest within the duration, with a trace of overshoot.
};

/// One change over time, about sixty steps a second. Beginning another one
/// cancels the one that runs, its completion included. Main thread.
class Animation
{
public:
    explicit Animation(MainQueue &queue);

    /// step gets the progress from 0 to 1, eased by the curve: 1 at the end, and
    /// never 0, so that the caller sets the start itself. done follows the last step.
    void begin(double duration, AnimationCurve curve, std::function<void(double)> step,
               std::function<void()> done = {});
    void cancel();

private:
    struct Run;

    void tick(const std::shared_ptr<Run> &run);

    MainQueue &m_queue;
    std::shared_ptr<Run> m_run; // None while nothing moves.
};
