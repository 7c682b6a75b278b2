#pragma once

#include "base/MainQueue.h"
#include "platform/FrontApplication.h"

#include <utility>

class FakeFrontApplication final : public FrontApplication
{
public:
    explicit FakeFrontApplication(MainQueue &queue)
        : m_queue(queue)
    {
    }
    Ticket identify(std::function<void(const QString &)> answer) override
    {
        ++reads;
        return m_queue.after(0, [now = current, answer = std::move(answer)] { answer(now); });
    }
    QString current;
    int reads = 0;

private:
    MainQueue &m_queue;
};
