#include "views/look/Symbols.h"

#include "views/look/Look.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>

namespace {

constexpr qsizetype cacheLimit = 200; // Far more than one palette needs.

QString fileName(Symbol symbol)
{
    switch (symbol) {
    case Symbol::Documents:
        return QStringLiteral("documents.svg");
    case Symbol::Trash:
        return QStringLiteral("trash.svg");
    case Symbol::Close:
        return QStringLiteral("close.svg");
    case Symbol::Remove:
        return QStringLiteral("remove.svg");
    case Symbol::Tray:
        return QStringLiteral("tray.svg");
    case Symbol::Pin:
        return QStringLiteral("pin.svg");
    case Symbol::ChevronDown:
        return QStringLiteral("chevron-down.svg");
    }
    return {};
}

QPixmap render(const QString &path, int pixels, const QColor &color)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QSvgRenderer drawing(file.readAll());
    if (!drawing.isValid())
        return {};
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    return QPixmap::fromImage(std::move(image));
}

}

Symbols::Symbols(QString folder)
    : m_folder(std::move(folder))
{
}

QPixmap Symbols::pixmap(Symbol symbol, double points, const QColor &color, double devicePixelRatio)
{
    const int pixels = static_cast<int>(std::lround(points * devicePixelRatio));
    const Key key { symbol, pixels, color.rgba() };
    auto found = m_cache.find(key);
    if (found == m_cache.end()) {
        if (m_cache.size() >= cacheLimit)
            m_cache.clear();
        found = m_cache.insert(key, render(m_folder + u'/' + fileName(symbol), pixels, color));
    }
    QPixmap result = *found;
    result.setDevicePixelRatio(devicePixelRatio);
    return result;
}

void Symbols::paint(QPainter &painter, Symbol symbol, const QRectF &rect, double points,
                    const QColor &color)
{
    const double ratio = Look::pixelRatio(painter);
    const auto onPixel = [ratio](double position) { return std::round(position * ratio) / ratio; };
    painter.drawPixmap(
        QPointF(onPixel(rect.center().x() - points / 2), onPixel(rect.center().y() - points / 2)),
        pixmap(symbol, points, color, ratio));
}
