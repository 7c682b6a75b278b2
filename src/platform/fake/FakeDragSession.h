#pragma once

#include "platform/DragSession.h"

#include <utility>
#include <vector>

/// Keeps what was dragged; the test ends the drag by calling onEnd.
class FakeDragSession final : public DragSession
{
public:
    struct Begun
    {
        QList<DraggingItem> items;
        QPointF at;
        std::function<void(bool)> onEnd;
    };

    void begin(const QList<DraggingItem> &items, const QPointF &at,
               std::function<void(bool)> onEnd) override
    {
        begun.push_back({ items, at, std::move(onEnd) });
    }

    void beginFrom(QWidget &, const QList<DraggingItem> &items, const QPointF &at,
                   std::function<void(bool)> onEnd) override
    {
        begin(items, at, std::move(onEnd));
    }

    std::vector<Begun> begun;
};
