#include "views/look/TitleButton.h"

#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace {
constexpr int smallestHeight = 26;
constexpr int markGap = 4;
constexpr int smallestTitle = 24;
constexpr double mostShrunk = 0.7; // Of its size.

int pinSize()
{
    return qRound(12 * Look::symbolScale());
}

int chevronSize()
{
    return qRound(11 * Look::symbolScale());
}

}

TitleButton::TitleButton(Symbols &symbols, QWidget *parent)
    : QPushButton(parent)
    , m_symbols(symbols)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setAccessibleRole(*this, QAccessible::ButtonMenu, [this] { Q_EMIT pressed(); });
}

void TitleButton::setTitle(const QString &title, Pin pin)
{
    m_title = title;
    m_pin = pin;
    setAccessibleName(title);
    updateGeometry();
    update();
}

void TitleButton::setHelp(const QString &text, const QString &pinned)
{
    ToolTip::set(*this, text);
    setAccessibleDescription(m_pin == Pin::Shown ? pinned + QStringLiteral(". ") + text : text);
}

QFont TitleButton::titleFont() const
{
    return Look::font(font(), 13, QFont::DemiBold);
}

/// Large text becomes somewhat smaller before it is cut.
QFont TitleButton::fittingFont(int room) const
{
    QFont font = titleFont();
    const double smallest
        = std::max(font.pointSizeF() / Look::textScale, font.pointSizeF() * mostShrunk);
    while (font.pointSizeF() > smallest && QFontMetrics(font).horizontalAdvance(m_title) >= room)
        font.setPointSizeF(std::max(smallest, font.pointSizeF() - 0.5));
    return font;
}

int TitleButton::marksWidth() const
{
    return markGap + chevronSize() + (m_pin == Pin::Shown ? markGap + pinSize() : 0);
}

QSize TitleButton::sizeHint() const
{
    const QFontMetrics metrics(titleFont());
    // One more than it measures: a fraction of a point must not cut the title.
    return { 2 * padding + metrics.horizontalAdvance(m_title) + 1 + marksWidth(),
             std::max(smallestHeight, metrics.height() + 4) };
}

QSize TitleButton::minimumSizeHint() const
{
    return { 2 * padding + smallestTitle + marksWidth(), sizeHint().height() };
}

void TitleButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor text = Look::text(palette());
    painter.setPen(hasFocus() ? QPen(Look::ring(palette()), 1.5) : Qt::NoPen);
    painter.setBrush(isDown()           ? Look::shade(palette(), 0.16)
                         : underMouse() ? Look::shade(palette(), 0.08)
                                        : QColor(Qt::transparent));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 6, 6);

    const auto place = [this](int left, int width) {
        return QStyle::visualRect(layoutDirection(), rect(), QRect(left, 0, width, height()));
    };
    const int room = width() - 2 * padding - marksWidth();
    painter.setFont(fittingFont(room));
    painter.setPen(text);
    const QString title = painter.fontMetrics().elidedText(m_title, Qt::ElideMiddle, room);
    const int titleWidth = std::min(room, painter.fontMetrics().horizontalAdvance(title) + 1);
    painter.drawText(place(padding, titleWidth),
                     Qt::AlignVCenter | Qt::AlignLeading | Qt::TextSingleLine, title);
    int next = padding + titleWidth + markGap;
    const QColor mark = Look::secondary(palette());
    if (m_pin == Pin::Shown) {
        m_symbols.paint(painter, Symbol::Pin, place(next, pinSize()), pinSize(), mark);
        next += pinSize() + markGap;
    }
    m_symbols.paint(painter, Symbol::ChevronDown, place(next, chevronSize()), chevronSize(), mark);
}
