#include "base/QtMainQueue.h"

#include <QMetaObject>
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
    QMetaObject::invokeMethod(&m_context, std::move(task), Qt::QueuedConnection);
}

Ticket QtMainQueue::after(double seconds, std::function<void()> task, Precision precision)
{
    return startTimer(seconds, std::move(task), precision, Repeat::Once);
}

Ticket QtMainQueue::every(double seconds, std::function<void()> task, Precision precision)
{
    return startTimer(seconds, std::move(task), precision, Repeat::Always);
}
