#include "views/DropOutline.h"

#include "views/Brand.h"
#include "views/Look.h"

#include <QPainter>

namespace {
constexpr double fadeDuration = 0.12;
constexpr double inset = 3;
constexpr double strokeWidth = 2;
constexpr double radius = 8; // Round the same centre as the panel's corners.
}

DropOutline::DropOutline(MainQueue &queue, QWidget *parent)
    : QWidget(parent)
    , m_fade(queue)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void DropOutline::setShown(bool shown)
{
    const double from = m_opacity;
    const double to = shown ? 1 : 0;
    raise();
    if (m_motion == Motion::Reduced) {
        setOpacity(to);
        return;
    }
    m_fade.begin(fadeDuration, AnimationCurve::EaseOut,
                 [this, from, to](double progress) { setOpacity(from + (to - from) * progress); });
}

void DropOutline::setOpacity(double opacity)
{
    m_opacity = opacity;
    setVisible(opacity > 0);
    update();
}

void DropOutline::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(m_opacity);
    constexpr double middle = inset + strokeWidth / 2; // A stroke lies on both sides of its line.
    const QRectF shape = QRectF(rect()).adjusted(middle, middle, -middle, -middle);
    painter.setPen(QPen(Brand::gradient(rect(), layoutDirection()), strokeWidth));
    painter.setBrush(Look::faded(Brand::accent, 0.07));
    painter.drawRoundedRect(shape, radius, radius);
}
