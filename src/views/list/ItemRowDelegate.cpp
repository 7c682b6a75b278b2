#include "views/list/ItemRowDelegate.h"

#include "platform/Icons.h"
#include "views/list/ItemListModel.h"
#include "views/look/Look.h"
#include "views/look/Symbols.h"

#include <QPainter>
#include <QStyleOptionViewItem>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace {

constexpr int rowSidePadding = 9;
constexpr int rowEndPadding = 6; // Above and below.
constexpr int iconGap = 9; // Between icon and text.
constexpr int rowLineGap = 1;
constexpr int removeSize = 15;
constexpr int removeArea = 22; // What takes presses is larger than what is drawn.
constexpr int cloudRoom = 22; // At the row's end, behind the remove button.
constexpr double rowRadius = 8;
constexpr double pictureRadius = 4;
constexpr qsizetype longestText = 600; // More than any row can show; the middle goes first anyway.
constexpr int rowsKept = 300;

/// One line: no line breaks, and not longer than a row could ever show.
QString singleLine(QString text)
{
    if (text.size() > longestText)
        text = text.first(longestText / 2) + u'…' + text.last(longestText / 2);
    for (QChar &c : text) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator
            || c == QChar::ParagraphSeparator)
            c = u' ';
    }
    return text;
}

bool sameContent(const ShelfItem &one, const ShelfItem &other)
{
    return one.url == other.url && one.preview == other.preview && one.link == other.link;
}

}

ItemRowDelegate::ItemRowDelegate(const ItemListModel &model, Icons &icons, Symbols &symbols,
                                 QWidget &view)
    : QAbstractItemDelegate(&view)
    , m_model(model)
    , m_icons(icons)
    , m_symbols(symbols)
    , m_view(view)
    , m_prepared(rowsKept)
{
    refresh();
}

void ItemRowDelegate::refresh()
{
    m_titleFont = Look::font(m_view.font(), 12.5, QFont::Medium);
    m_subtitleFont = Look::font(m_view.font(), 10);
    m_heights.reset();
    m_prepared.clear();
}

const ItemRowDelegate::Heights &ItemRowDelegate::heights() const
{
    if (!m_heights) {
        const int title = QFontMetrics(m_titleFont).height();
        const int subtitle = QFontMetrics(m_subtitleFont).height();
        const int row = std::max(iconSize, title + rowLineGap + subtitle) + 2 * rowEndPadding;
        m_heights = { title, subtitle, row };
    }
    return *m_heights;
}

QString ItemRowDelegate::shortened(const ShelfItem &item) const
{
    const Prepared *known = m_prepared.object(item.id);
    return known ? known->shortened : QString();
}

QRect ItemRowDelegate::buttonRect(const QRect &row) const
{
    // The drawn circle ends where the cloud's room begins.
    const int right = row.right() + 1 - rowSidePadding - cloudRoom + (removeArea - removeSize) / 2;
    return mirrored(
        { right - removeArea, row.top() + (row.height() - removeArea) / 2, removeArea, removeArea },
        row);
}

QRect ItemRowDelegate::mirrored(const QRect &rect, const QRect &row) const
{
    return QStyle::visualRect(m_view.layoutDirection(), row, rect);
}

void ItemRowDelegate::paintRow(QPainter &painter, const QRect &row, const ShelfItem &item,
                               const RowLook &look)
{
    const QPalette &palette = m_view.palette();
    if (look.selected || look.hovered) {
        const QColor highlight = palette.color(QPalette::Highlight);
        const double frame = !look.selected ? 0 : Look::isHighContrast(palette) ? 2 : 1;
        painter.setPen(look.selected ? QPen(Look::ring(palette), frame) : QPen(Qt::NoPen));
        painter.setBrush(look.selected ? Look::faded(highlight, Look::selected)
                                       : Look::shade(palette, 0.07));
        const double inset = frame / 2;
        painter.drawRoundedRect(QRectF(row).adjusted(inset, inset, -inset, -inset), rowRadius,
                                rowRadius);
    }
    const int textLeft = row.left() + rowSidePadding + iconSize + iconGap;
    const int buttonRoom = look.button == RowLook::Button::Hidden ? 0 : removeSize + 6;
    const int textRight = row.right() + 1 - rowSidePadding - cloudRoom - buttonRoom;
    const QRect text(textLeft, row.top(), textRight - textLeft, row.height());
    const auto &content = prepared(item, text.width(), Look::pixelRatio(painter));

    const QRect icon = mirrored({ row.left() + rowSidePadding,
                                  row.top() + (row.height() - iconSize) / 2, iconSize, iconSize },
                                row);
    if (look.picture.isNull()) {
        const QSizeF extent = content.icon.deviceIndependentSize();
        painter.drawPixmap(QPointF(icon.left() + (iconSize - extent.width()) / 2,
                                   icon.top() + (iconSize - extent.height()) / 2),
                           content.icon);
    } else {
        paintPicture(painter, icon, look.picture);
    }
    paintText(painter, mirrored(text, row), content);
    if (look.button != RowLook::Button::Hidden)
        paintButton(painter, row, look.button);
}

/// The whole picture, never enlarged. A brush, since clipping leaves ragged corners.
void ItemRowDelegate::paintPicture(QPainter &painter, const QRect &area, const QPixmap &picture)
{
    const double ratio = Look::pixelRatio(painter);
    QSizeF size = QSizeF(picture.size()) / ratio;
    if (size.width() > area.width() || size.height() > area.height())
        size.scale(area.size(), Qt::KeepAspectRatio);
    QRectF target({}, size);
    target.moveCenter(QRectF(area).center());
    // On whole device pixels, so that a picture made for this size stays sharp.
    target.moveTopLeft(QPointF(std::floor(target.left() * ratio) / ratio,
                               std::floor(target.top() * ratio) / ratio));
    const double scale = size.width() / picture.width();
    QBrush brush(picture);
    brush.setTransform(
        QTransform(scale, 0, 0, scale, target.left(), target.top())); // From pixels of the picture.
    painter.setPen(QPen(QColor(0, 0, 0, 20), 0.5)); // Opacity 0.08.
    painter.setBrush(brush);
    painter.drawRoundedRect(target, pictureRadius, pictureRadius);
}

void ItemRowDelegate::paintText(QPainter &painter, const QRect &area, const Prepared &content) const
{
    const bool rightAligned = m_view.layoutDirection() == Qt::RightToLeft;
    const auto leftOf = [&](const QStaticText &text) {
        return rightAligned ? area.right() + 1 - text.size().width() : double(area.left());
    };
    // Letters that another font brings may make a line higher than the font's own.
    const double title = content.title.size().height();
    const double block = title + rowLineGap + content.subtitle.size().height();
    const int top = area.top() + qRound((area.height() - block) / 2);
    painter.setPen(Look::text(m_view.palette()));
    painter.setFont(m_titleFont);
    painter.drawStaticText(QPointF(leftOf(content.title), top), content.title);
    painter.setPen(Look::secondary(m_view.palette()));
    painter.setFont(m_subtitleFont);
    painter.drawStaticText(QPointF(leftOf(content.subtitle), top + qRound(title) + rowLineGap),
                           content.subtitle);
}

void ItemRowDelegate::paintButton(QPainter &painter, const QRect &row, RowLook::Button button)
{
    const QPalette &palette = m_view.palette();
    QColor color = Look::secondary(palette);
    if (button == RowLook::Button::Hovered)
        color = Look::faded(Look::text(palette), 0.85);
    else if (button == RowLook::Button::Pressed)
        color = Look::text(palette);
    m_symbols.paint(painter, Symbol::Remove, buttonRect(row), removeSize, color);
}

const ItemRowDelegate::Prepared &ItemRowDelegate::prepared(const ShelfItem &item, int width,
                                                           double ratio)
{
    Prepared *known = m_prepared.object(item.id);
    if (known && known->width == width && known->ratio == ratio && sameContent(known->source, item))
        return *known;
    const bool keepIcon = known && known->ratio == ratio && sameContent(known->source, item);

    auto *fresh = new Prepared { item, width, ratio, {}, {}, {}, {} }; // The cache owns it.
    const QString title = singleLine(itemTitle(item));
    const QString subtitle = singleLine(itemSubtitle(item));
    fresh->title = shaped(title, m_titleFont, width,
                          title.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    // Paths and addresses read from the left in every language.
    fresh->subtitle = shaped(subtitle, m_subtitleFont, width, Qt::LeftToRight);
    QStringList cut;
    if (fresh->title.text() != title)
        cut.append(itemTitle(item));
    if (fresh->subtitle.text() != subtitle)
        cut.append(itemSubtitle(item));
    fresh->shortened = cut.join(u'\n');
    if (keepIcon) {
        fresh->icon = known->icon;
    } else {
        const QIcon icon = item.link ? m_icons.forWebLocation() : m_icons.forFile(item.url);
        fresh->icon = icon.pixmap(QSize(iconSize, iconSize), ratio);
    }
    m_prepared.insert(item.id, fresh);
    return *fresh;
}

QStaticText ItemRowDelegate::shaped(const QString &text, const QFont &font, int width,
                                    Qt::LayoutDirection direction) const
{
    QStaticText result(QFontMetricsF(font).elidedText(text, Qt::ElideMiddle, std::max(width, 0)));
    result.setTextFormat(Qt::PlainText);
    QTextOption option;
    option.setTextDirection(direction);
    option.setWrapMode(QTextOption::NoWrap);
    result.setTextOption(option);
    result.setPerformanceHint(QStaticText::AggressiveCaching);
    result.prepare({}, font);
    return result;
}

void ItemRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    const RowLook look { option.state.testFlag(QStyle::State_Selected),
                         option.state.testFlag(QStyle::State_MouseOver),
                         RowLook::Button::Hidden,
                         {} };
    const_cast<ItemRowDelegate *>(this)->paintRow(*painter, option.rect, m_model.item(index.row()),
                                                  look);
}

QSize ItemRowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return { option.rect.width(), height() };
}
