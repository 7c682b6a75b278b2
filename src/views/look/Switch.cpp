#include "views/look/Switch.h"

#include "views/look/LinePieces.h"
#include "views/look/Look.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int gap = 12; // Between the text and the switch.
constexpr int inset = 2; // Between the knob and the track's edge.

}

Switch::Switch(QWidget *parent)
    : QCheckBox(parent)
{
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setAttribute(Qt::WA_Hover);
}

/// Grows with the text.
QSize Switch::trackSize() const
{
    const int height = std::max(18, fontMetrics().height());
    return { height * 16 / 9, height };
}

QSize Switch::sizeHint() const
{
    const int width = fontMetrics().horizontalAdvance(text()) + gap + trackSize().width();
    return { width, std::max(trackSize().height(), fontMetrics().height()) + 2 };
}

QSize Switch::minimumSizeHint() const
{
    int widest = 0;
    for (const QString &piece : linePieces(text()))
        widest = std::max(widest, fontMetrics().horizontalAdvance(piece.trimmed()));
    return { widest + gap + trackSize().width(), trackSize().height() + 2 };
}

int Switch::heightForWidth(int width) const
{
    const QRect space(0, 0, width - gap - trackSize().width(), 10000);
    const QRect needed = fontMetrics().boundingRect(space, Qt::TextWordWrap, text());
    return std::max(needed.height(), trackSize().height()) + 2;
}

void Switch::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1 : 0.45);
    const QColor textColor = Look::text(palette());
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const QSize size = trackSize();
    const QRectF track(mirrored ? 1 : width() - size.width() - 1, (height() - size.height()) / 2,
                       size.width(), size.height());
    const int textWidth = width() - size.width() - gap;
    painter.setPen(textColor);
    painter.drawText(QRect(mirrored ? width() - textWidth : 0, 0, textWidth, height()),
                     Qt::TextWordWrap | Qt::AlignVCenter | Look::leading(layoutDirection()),
                     text());
    const QColor on = palette().color(QPalette::Highlight);
    const double radius = track.height() / 2;
    painter.setPen(isChecked() ? Look::ring(palette()) : Look::edge(palette()));
    painter.setBrush(isChecked() ? on : Look::shade(palette(), underMouse() ? 0.2 : 0.12));
    painter.drawRoundedRect(track.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    const double knob = track.height() - 2 * inset - 2;
    const bool atRight = isChecked() != mirrored;
    const double x = atRight ? track.right() - knob - inset - 1 : track.left() + inset + 1;
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? palette().color(QPalette::HighlightedText)
                                 : Look::faded(textColor, 0.7));
    painter.drawEllipse(QRectF(x, track.top() + inset + 1, knob, knob));
    if (hasFocus()) {
        painter.setPen(QPen(Look::ring(palette()), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect())
                                    .adjusted(-3, 0.75, 3, -0.75)
                                    .intersected(rect())
                                    .adjusted(0.75, 0, -0.75, 0),
                                5, 5);
    }
}
