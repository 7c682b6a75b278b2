#pragma once

#include "panel/Animation.h"
#include "store/ShelfItem.h"

#include <QHash>

#include <functional>
#include <vector>

/// How rows look while a change of the list is still being shown: they come from
/// where they were seen last, new ones appear, and those that left fade away. A
/// change during the motion starts from what is seen at that moment.
class RowMotion
{
public:
    explicit RowMotion(MainQueue &queue)
        : m_animation(queue)
    {
    }

    /// A row that left, where it stood in the viewport.
    struct Ghost
    {
        ShelfItem item;
        double top = 0;
        double opacity = 1;
    };

    struct Start
    {
        std::vector<Ghost> ghosts;
        QHash<QUuid, double> shifts; // Distance of a row from its place.
        QHash<QUuid, double> opacities; // Of rows that are not quite there yet.
    };

    void begin(Start start);
    void stop();
    bool isRunning() const { return m_running; }

    // As of this moment.
    double shift(const QUuid &id) const;
    double opacity(const QUuid &id) const;
    std::vector<Ghost> ghosts() const;

    std::function<void()> onFrame;

private:
    Animation m_animation;
    bool m_running = false;
    double m_progress = 1; // A little beyond 1 at times.
    Start m_start;
};
