#pragma once

#include <QColor>
#include <QHash>
#include <QPixmap>
#include <QString>

class QPainter;
class QRectF;

enum class Symbol { Documents, Trash, Close, Remove, Tray, Pin, ChevronDown };

/// The program's own line drawings, tinted when they are painted, so that they
/// follow the palette. A drawing that is missing paints nothing. Main thread.
class Symbols
{
public:
    /// folder: holds one SVG file for each symbol.
    explicit Symbols(QString folder);

    /// Draws the symbol into a square of that many points.
    QPixmap pixmap(Symbol symbol, double points, const QColor &color, double devicePixelRatio);
    /// Draws it in the middle of the rectangle, on whole device pixels.
    void paint(QPainter &painter, Symbol symbol, const QRectF &rect, double points,
               const QColor &color);

private:
    struct Key
    {
        Symbol symbol;
        int pixels;
        QRgb color;

        bool operator==(const Key &) const = default;
        friend size_t qHash(const Key &key, size_t seed = 0)
        {
            return qHashMulti(seed, static_cast<int>(key.symbol), key.pixels, key.color);
        }
    };

    QString m_folder;
    QHash<Key, QPixmap> m_cache; // A few colours of a few sizes.
};
