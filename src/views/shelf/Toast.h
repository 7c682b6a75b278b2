#pragma once

#include "panel/Animation.h"
#include "views/look/Motion.h"

#include <QWidget>

#include <deque>
#include <optional>

/// A short message over the lower edge of its parent, which takes no presses.
/// A newer message replaces the one that shows and brings its own time; a
/// message's own end ends a later one only where it says the same.
class Toast final : public QWidget
{
public:
    Toast(MainQueue &queue, QWidget *parent);

    void showText(const QString &text);
    const std::optional<QString> &text() const { return m_text; }
    void setMotion(Motion motion) { m_motion = motion; }
    /// The parent changed its size.
    void place();

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void expire(const QString &text);
    void fadeTo(double opacity);
    QFont textFont() const;

    MainQueue &m_queue;
    Motion m_motion = Motion::Full;
    std::optional<QString> m_text;
    QString m_painted; // Stays while the message fades away.
    double m_opacity = 0;
    Animation m_fade;
    std::deque<Ticket> m_timers; // Oldest first; they end in this order.
};
