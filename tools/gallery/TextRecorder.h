#pragma once

#include <QList>
#include <QPaintDevice>
#include <QRectF>
#include <QString>

#include <memory>

class QWidget;

/// A run of text that a widget drew. Rectangles are in points of the window.
struct DrawnText
{
    const QWidget *widget;
    QString text;
    QRectF ink; // What its letters cover.
    QRectF clip; // Where the painter lets anything appear; the widget's own bounds not counted.
};

/// A device that keeps the texts that are painted on it and no pixel. It hears what
/// really reaches the screen, also from styles and from widgets that paint themselves.
class TextRecorder final : public QPaintDevice
{
public:
    /// Everything that the window and its children draw.
    static QList<DrawnText> record(QWidget &window);

    QPaintEngine *paintEngine() const override;

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    class Engine;

    explicit TextRecorder(const QSize &size);
    ~TextRecorder() override;

    QSize m_size;
    std::unique_ptr<Engine> m_engine;
};
