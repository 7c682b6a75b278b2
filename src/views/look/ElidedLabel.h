#pragma once

#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QPainter>

/// One line that gives way in the middle, where names and paths differ least.
class ElidedLabel final : public PlainLabel
{
public:
    using PlainLabel::PlainLabel;
    QSize minimumSizeHint() const override { return { 40, QLabel::minimumSizeHint().height() }; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setPen(Look::text(palette()));
        painter.drawText(rect(), Qt::AlignVCenter | Look::leading(layoutDirection()),
                         fontMetrics().elidedText(text(), Qt::ElideMiddle, width()));
    }
};
