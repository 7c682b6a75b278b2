#pragma once

#include "base/Ticket.h"
#include "platform/Modifiers.h"

#include <QPointF>

#include <functional>
#include <optional>

enum class PointerEvent { LeftDown, LeftUp, Moved, LeftDragged };

/// The pointer of the whole session, while other programs' drags hold it too.
/// Presses on windows of this program are not delivered, releases always are; a
/// release waits until a drop that is still landing on a window of ours has
/// ended. While no button is down nothing is delivered and nothing runs.
/// Points are device-independent pixels of the virtual desktop, y downwards.
/// Main thread.
class PointerMonitor
{
public:
    virtual ~PointerMonitor() = default;

    /// Watches until the ticket is dropped; null where the desktop cannot.
    [[nodiscard]] virtual Ticket watch(std::function<void(PointerEvent)> handler) = 0;
    /// None where the desktop does not tell it.
    virtual std::optional<QPointF> location() const = 0;
    /// EventModifier bits that are down at this moment.
    virtual Modifiers modifiers() const = 0;
    /// Bit 0 is the left button.
    virtual unsigned pressedButtons() const = 0;

    struct Look
    {
        std::optional<QPointF> location;
        unsigned pressedButtons = 0;
    };
    /// The same two, without waiting: they follow in a moment, unless the ticket is dropped.
    [[nodiscard]] virtual Ticket look(std::function<void(const Look &)> done) = 0;
};
