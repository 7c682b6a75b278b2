#pragma once

#include "store/ShelfItem.h"
#include "views/list/ItemListModel.h"
#include "views/look/Symbols.h"

#include <QHash>
#include <QPixmap>
#include <QRectF>
#include <QWidget>

#include <array>
#include <memory>
#include <vector>

class DragSession;
class Icons;
class ItemRowDelegate;
class Localizer;
class QPainter;
class ShelfHeader;

/// A row of the miniature shelf: one of the four files of the mock-ups, and how
/// far it has come (0: not there, 1: in its place).
struct MockRow
{
    int file;
    double presence = 1;
    double opacity = 1;
};

/// What the tour's pictures are put together from. Rectangles are those of the
/// picture, left to right; where the language runs the other way everything is
/// mirrored but the pointer. The shelf is painted by what paints the real one.
class Mocks
{
public:
    static constexpr QSizeF stage { 640, 330 };
    static constexpr int files = 4;
    static constexpr double rowHeight = 44; // Of the miniature shelf, whatever the text's size.
    static constexpr double shelfWidth = 226;

    Mocks(QWidget &scene, const QString &resources, const Localizer &texts, DragSession &session);
    ~Mocks();

    QPointF mirrored(const QPointF &point) const;
    QRectF mirrored(const QRectF &rect) const;

    void shelf(QPainter &painter, const QPointF &topLeft, double height,
               const std::vector<MockRow> &rows, double targeted = 0);
    /// The middle of such a shelf's row.
    static QPointF rowCentre(const QPointF &topLeft, int row);
    /// A window with its title bar.
    void window(QPainter &painter, const QRectF &frame) const;
    /// A place of the grid of two rows and three columns in such a window.
    static QRectF gridCell(const QRectF &window, int index);
    void mail(QPainter &painter, const QRectF &frame, int file, double attached) const;
    static QPointF attachmentCentre(const QRectF &window);
    void menuBar(QPainter &painter, const QRectF &frame);
    void keyCap(QPainter &painter, const QRectF &frame, const QString &label, double pressed) const;
    static double keyCapWidth(const QString &label);
    void file(QPainter &painter, const QPointF &centre, double size, int index) const;
    void pointer(QPainter &painter, const QPointF &tip, double pressed) const;
    void card(QPainter &painter, const QRectF &frame, double radius, const QColor &fill) const;

    /// A tinted sheet with a drawing on it.
    static void paintFile(QPainter &painter, const QRectF &square, int index);

private:
    void paintRows(QPainter &painter, double shelf, const std::vector<MockRow> &rows);
    double rowScale();
    double headerScale();
    const QPixmap &header(int count, double width, double ratio);
    QFont fixedFont(double pixels, QFont::Weight weight) const;

    QWidget &m_scene;
    const Localizer &m_texts;
    Symbols m_symbols;
    std::unique_ptr<Icons> m_icons;
    ItemListModel m_model;
    ItemRowDelegate *m_rows; // The scene's.
    QFont m_rowFont; // With which rows were measured.
    std::array<ShelfItem, files> m_items;
    std::unique_ptr<ShelfHeader> m_header;
    QPixmap m_headerPicture;
    QString m_headerKey; // What the picture shows.
};
