#pragma once

#include "views/look/Look.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>

/// Leaves the arrows to the window.
class OpenButton final : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() >= Qt::Key_Left && event->key() <= Qt::Key_Down)
            event->ignore(); // They walk.
        else
            QPushButton::keyPressEvent(event);
    }
};

/// Between the header and what it heads.
class Hairline final : public QWidget
{
public:
    explicit Hairline(QWidget *parent)
        : QWidget(parent)
    {
        setFixedHeight(1);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter(this).fillRect(rect(), Look::shade(palette(), 0.12));
    }
};
