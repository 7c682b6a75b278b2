#include "base/QtMainQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>

#include <chrono>
#include <cmath>

namespace {

enum class Repeat { Once, Always };

Ticket startTimer(double seconds, std::function<void()> task, MainQueue::Precision precision,
                  Repeat repeat)
{
    auto *timer = new QTimer; // Owned by the ticket.
    timer->setSingleShot(repeat == Repeat::Once);
    timer->setTimerType(precision == MainQueue::Precision::Exact ? Qt::PreciseTimer
                                                                 : Qt::CoarseTimer);
    timer->setInterval(static_cast<int>(std::lround(seconds * 1000)));
    QObject::connect(timer, &QTimer::timeout, timer, std::move(task));
    timer->start();
    // A task may drop its own ticket, so the timer outlives the signal that calls it.
    return std::shared_ptr<const QTimer>(timer, [timer](const QTimer *) {
        timer->stop();
        timer->deleteLater();
    });
}

}

void QtMainQueue::Posted::add(std::function<void()> task)
{
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(std::move(task));
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool QtMainQueue::Posted::event(QEvent *event)
{
    std::function<void()> task;
    {
        const std::lock_guard lock(m_mutex);
        if (event->type() != QEvent::User)
            return QObject::event(event);
        task = std::move(m_tasks.front());
        m_tasks.pop_front();
    }
    task();
    return true;
}

double QtMainQueue::uptime() const
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

double QtMainQueue::now() const
{
    using namespace std::chrono;
    constexpr double unixToReference = 978307200; // 2001-01-01 in seconds of the Unix epoch.
    return duration<double>(system_clock::now().time_since_epoch()).count() - unixToReference;
}

void QtMainQueue::post(std::function<void()> task)
{
    m_posted.add(std::move(task));
}

Ticket QtMainQueue::after(double seconds, std::function<void()> task, Precision precision)
{
    return startTimer(seconds, std::move(task), precision, Repeat::Once);
}

Ticket QtMainQueue::every(double seconds, std::function<void()> task, Precision precision)
{
    return startTimer(seconds, std::move(task), precision, Repeat::Always);
}
