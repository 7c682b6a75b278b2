#pragma once

#include <QIcon>
#include <QPainter>
#include <QWidget>

/// A picture, sharp at whatever scale it is painted.
class IconLabel final : public QWidget
{
public:
    IconLabel(QIcon icon, int size, QWidget *parent)
        : QWidget(parent)
        , m_icon(std::move(icon))
    {
        setFixedSize(size, size);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        m_icon.paint(&painter, rect());
    }

private:
    QIcon m_icon;
};
