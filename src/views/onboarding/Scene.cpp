#include "views/onboarding/Scene.h"

#include <QPainter>

#include <algorithm>

double progress(double time, double from, double to)
{
    const double x = std::clamp((time - from) / (to - from), 0.0, 1.0);
    return x * x * (3 - 2 * x);
}

QPointF between(const QPointF &from, const QPointF &to, double progress)
{
    return from + (to - from) * progress;
}

Scene::Scene(MainQueue &queue, double period, double still)
    : m_period(period)
    , m_still(still)
    , m_clock(queue, [this] { update(); })
{
}

void Scene::setMotion(Motion motion)
{
    m_motion = motion;
    runClock();
    update();
}

void Scene::runClock()
{
    const bool runs = isVisible() && m_motion == Motion::Full && moves();
    if (!runs)
        m_clock.stop();
    else if (!m_clock.isRunning())
        m_clock.start();
}

/// Also when the window comes back from being minimised.
void Scene::showEvent(QShowEvent *)
{
    runClock();
}

void Scene::hideEvent(QHideEvent *)
{
    m_clock.stop();
}

void Scene::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const double scale = std::min(width() / Mocks::stage.width(), height() / Mocks::stage.height());
    painter.translate((width() - Mocks::stage.width() * scale) / 2,
                      (height() - Mocks::stage.height() * scale) / 2);
    painter.scale(scale, scale);
    draw(painter, m_clock.isRunning() ? m_clock.time(m_period) : m_still);
}
