#pragma once

#include "panel/Animation.h"
#include "views/look/Motion.h"

#include <QWidget>

/// The outline that says that a drag would be taken here.
class DropOutline final : public QWidget
{
public:
    DropOutline(MainQueue &queue, QWidget *parent);

    void setShown(bool shown);
    void setMotion(Motion motion) { m_motion = motion; }
    /// Onto something that looks like the panel.
    static void paint(QPainter &painter, const QRectF &panel, Qt::LayoutDirection direction,
                      const QPalette &palette);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void setOpacity(double opacity);

    Motion m_motion = Motion::Full;
    double m_opacity = 0;
    Animation m_fade;
};
