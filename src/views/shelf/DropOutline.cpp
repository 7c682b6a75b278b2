#include "views/shelf/DropOutline.h"

#include "views/look/Brand.h"
#include "views/look/Look.h"

#include <QPainter>

namespace {
constexpr double outlineFade = 0.12;
constexpr double outlineInset = 3;
constexpr double outlineWidth = 2;
constexpr double outlineRadius = 8; // Round the same centre as the panel's corners.
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
    m_fade.begin(outlineFade, AnimationCurve::EaseOut,
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
    paint(painter, rect(), layoutDirection(), palette());
}

void DropOutline::paint(QPainter &painter, const QRectF &panel, Qt::LayoutDirection direction,
                        const QPalette &palette)
{
    // A stroke lies on both sides of its line.
    constexpr double middle = outlineInset + outlineWidth / 2;
    const QRectF shape = panel.adjusted(middle, middle, -middle, -middle);
    painter.setPen(QPen(Brand::line(panel, direction, palette), outlineWidth));
    painter.setBrush(Look::faded(Brand::accent, 0.07));
    painter.drawRoundedRect(shape, outlineRadius, outlineRadius);
}
