#pragma once

#include "views/look/Motion.h"
#include "views/onboarding/LoopClock.h"
#include "views/onboarding/Mocks.h"

#include <QWidget>

/// One animated picture of the tour. Its clock runs while the picture can be seen
/// and things may move; otherwise it shows its most telling moment. It says
/// nothing that title and subtitle do not say, so screen readers pass it over.
class Scene : public QWidget
{
public:
    /// period and still: seconds, of one round and of the moment to stand at.
    Scene(MainQueue &queue, double period, double still);

    void setMotion(Motion motion);

protected:
    /// On the stage of the mock-ups, which is scaled to the widget.
    virtual void draw(QPainter &painter, double time) = 0;
    /// Whether there is anything to move at the moment; runClock() follows a change.
    virtual bool moves() const { return true; }
    void runClock();

    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    double m_period;
    double m_still;
    Motion m_motion = Motion::Full;
    LoopClock m_clock;
};

/// How far from one moment to another, 0 to 1, easing at both ends.
double progress(double time, double from, double to);
QPointF between(const QPointF &from, const QPointF &to, double progress);
