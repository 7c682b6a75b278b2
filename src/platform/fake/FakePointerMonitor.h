#pragma once

#include "platform/PointerMonitor.h"

#include <memory>
#include <utility>

class FakePointerMonitor final : public PointerMonitor
{
public:
    [[nodiscard]] Ticket watch(std::function<void(PointerEvent)> handler) override
    {
        if (refuses)
            return nullptr;
        auto ticket = std::make_shared<std::function<void(PointerEvent)>>(std::move(handler));
        m_handler = ticket;
        return ticket;
    }
    std::optional<QPointF> location() const override { return at; }
    Modifiers modifiers() const override { return held; }
    unsigned pressedButtons() const override { return buttons; }
    [[nodiscard]] Ticket look(std::function<void(const Look &)> done) override
    {
        done({ at, buttons });
        return nullptr;
    }

    bool isWatched() const { return !m_handler.expired(); }
    void send(PointerEvent event)
    {
        if (const auto handler = m_handler.lock())
            (*handler)(event);
    }
    void press(const QPointF &point)
    {
        at = point;
        buttons |= 1;
        send(PointerEvent::LeftDown);
    }
    void drag(const QPointF &point)
    {
        at = point;
        send(PointerEvent::LeftDragged);
    }
    void release()
    {
        buttons &= ~1U;
        send(PointerEvent::LeftUp);
    }

    std::optional<QPointF> at = QPointF();
    Modifiers held = 0;
    unsigned buttons = 0;
    bool refuses = false; // As a desktop that lets nobody watch.

private:
    std::weak_ptr<std::function<void(PointerEvent)>> m_handler;
};
