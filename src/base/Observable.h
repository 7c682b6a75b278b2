#pragma once

#include "base/Ticket.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

enum class Deliver { CurrentFirst, ChangesOnly };

/// A value that announces a change before it stores it: subscribers get the new
/// value as argument while value() still gives the old one. Every set()
/// announces, equal or not. A subscriber that needs the stored state posts to
/// the MainQueue first. Main thread only.
template<typename T>
class Observable
{
public:
    using Handler = std::function<void(const T &)>;

    Observable() = default;
    explicit Observable(T initial)
        : m_value(std::move(initial))
    {
    }
    Observable(const Observable &) = delete;
    Observable &operator=(const Observable &) = delete;

    const T &value() const { return m_value; }

    void set(T next)
    {
        std::erase_if(m_handlers, [](const auto &handler) { return handler.expired(); });
        // A copy, and a locked handler: a subscriber may subscribe or drop
        // itself while it is being called.
        for (const auto &weak : std::vector(m_handlers)) {
            if (auto handler = weak.lock())
                (*handler)(next);
        }
        m_value = std::move(next);
    }

    /// The subscription ends when the ticket is dropped.
    [[nodiscard]] Ticket subscribe(Handler handler, Deliver deliver = Deliver::CurrentFirst)
    {
        auto shared = std::make_shared<Handler>(std::move(handler));
        m_handlers.push_back(shared);
        if (deliver == Deliver::CurrentFirst)
            (*shared)(m_value);
        return shared;
    }

private:
    T m_value {};
    std::vector<std::weak_ptr<Handler>> m_handlers;
};
