#pragma once

#include "store/ShelfItem.h"

#include <QAbstractItemDelegate>
#include <QCache>
#include <QFont>
#include <QPixmap>
#include <QStaticText>

#include <optional>

class Icons;
class ItemListModel;
class Symbols;
class QWidget;

/// How one row is to be painted.
struct RowLook
{
    enum class Button { Hidden, Shown, Hovered, Pressed };

    bool selected = false;
    bool hovered = false;
    Button button = Button::Hidden;
    QPixmap picture; // Of the file, in device pixels; null: the icon of its type.
};

/// Paints the rows of the list: icon, two lines of text, and the remove button of
/// the row under the pointer. Shaped text and icons of rows that were painted
/// lately are kept, so that scrolling shapes each row once.
class ItemRowDelegate final : public QAbstractItemDelegate
{
public:
    ItemRowDelegate(const ItemListModel &model, Icons &icons, Symbols &symbols, QWidget &view);

    static constexpr int iconSize = 32; // Points.

    /// Row height in points, at the fonts of the moment.
    int height() const { return heights().row; }
    /// What of the row the panel had no room for, one a line; empty if it shows all.
    QString shortened(const ShelfItem &item) const;
    /// Where the remove button of a row with that frame takes presses.
    QRect buttonRect(const QRect &row) const;
    void paintRow(QPainter &painter, const QRect &row, const ShelfItem &item, const RowLook &look);
    /// Fonts, theme or screen changed: nothing that was kept holds any more.
    void refresh();

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    /// What painting a row needs, made once for an entry and a width.
    struct Prepared
    {
        ShelfItem source; // Shares its strings with the store; tells when this is stale.
        int width = 0;
        double ratio = 1;
        QStaticText title;
        QStaticText subtitle;
        QString shortened; // The whole of what they had to cut.
        QPixmap icon;
    };

    /// In points.
    struct Heights
    {
        int title;
        int subtitle;
        int row;
    };

    /// Measured when first asked for: while the program starts no row needs its fonts.
    const Heights &heights() const;
    const Prepared &prepared(const ShelfItem &item, int width, double ratio);
    QStaticText shaped(const QString &text, const QFont &font, int width,
                       Qt::LayoutDirection direction) const;
    void paintText(QPainter &painter, const QRect &area, const Prepared &content) const;
    static void paintPicture(QPainter &painter, const QRect &area, const QPixmap &picture);
    void paintButton(QPainter &painter, const QRect &row, RowLook::Button button);
    QRect mirrored(const QRect &rect, const QRect &row) const;

    const ItemListModel &m_model;
    Icons &m_icons;
    Symbols &m_symbols;
    QWidget &m_view;
    QFont m_titleFont;
    QFont m_subtitleFont;
    mutable std::optional<Heights> m_heights;
    QCache<QUuid, Prepared> m_prepared;
};
