#include "gallery/TextRecorder.h"

#include <QApplication>
#include <QEvent>
#include <QFontMetricsF>
#include <QHash>
#include <QPaintEngine>
#include <QPainter>
#include <QWidget>

namespace {

/// Measuring letters is most of the work, and the same texts come again and again.
QRectF inkOf(const QFont &font, const QString &text)
{
    static QHash<std::pair<QString, QString>, QRectF> known;
    const auto key = std::pair(font.key(), text);
    if (const auto found = known.constFind(key); found != known.constEnd())
        return *found;
    return *known.insert(key, QFontMetricsF(font).tightBoundingRect(text));
}

constexpr double anywhere = 1e6;
constexpr double unseen = 0.05; // Opacity.

}

/// Paint events tell whose texts come: the widgets share one painter.
class TextRecorder::Engine final : public QPaintEngine, public QObject
{
public:
    Engine()
        : QPaintEngine(AllFeatures)
    {
    }

    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState &) override { }
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override { }
    void drawImage(const QRectF &, const QImage &, const QRectF &,
                   Qt::ImageConversionFlags) override
    {
    }
    void drawTiledPixmap(const QRectF &, const QPixmap &, const QPointF &) override { }
    void drawPath(const QPainterPath &) override { }
    void drawPolygon(const QPointF *, int, PolygonDrawMode) override { }

    void drawTextItem(const QPointF &at, const QTextItem &item) override
    {
        const QPainter &from = *painter();
        const bool isSeen = from.opacity() * from.pen().color().alphaF() > unseen;
        if (!isSeen || item.text().trimmed().isEmpty())
            return;
        const QTransform toWindow = from.deviceTransform();
        const QRectF ink = inkOf(item.font(), item.text()).translated(at);
        const QRectF clip = from.hasClipping()
            ? toWindow.mapRect(from.clipBoundingRect())
            : QRectF(-anywhere, -anywhere, 2 * anywhere, 2 * anywhere);
        texts.append({ m_widget, item.text(), toWindow.mapRect(ink), clip });
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_widget = qobject_cast<QWidget *>(watched);
        return false;
    }

    QList<DrawnText> texts;

private:
    const QWidget *m_widget = nullptr;
};

QList<DrawnText> TextRecorder::record(QWidget &window)
{
    TextRecorder recorder(window.size());
    qApp->installEventFilter(recorder.m_engine.get());
    window.render(&recorder, {}, {}, QWidget::DrawChildren);
    return recorder.m_engine->texts;
}

TextRecorder::TextRecorder(const QSize &size)
    : m_size(size)
    , m_engine(std::make_unique<Engine>())
{
}

TextRecorder::~TextRecorder() = default;

QPaintEngine *TextRecorder::paintEngine() const
{
    return m_engine.get();
}

int TextRecorder::metric(PaintDeviceMetric metric) const
{
    switch (metric) {
    case PdmWidth:
        return m_size.width();
    case PdmHeight:
        return m_size.height();
    case PdmDepth:
        return 32;
    case PdmNumColors:
        return 1 << 24;
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
        return 96;
    case PdmDevicePixelRatio:
        return 1;
    default:
        return QPaintDevice::metric(metric);
    }
}
