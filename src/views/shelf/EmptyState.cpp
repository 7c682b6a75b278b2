#include "views/shelf/EmptyState.h"

#include "views/look/AccessibleRole.h"
#include "views/look/Brand.h"
#include "views/look/Look.h"
#include "views/look/Symbols.h"

#include <QPainter>

namespace {
constexpr int traySize = 56;
constexpr int smallestTray = 20; // Large texts in a small panel leave less; then none is better.
constexpr int trayGap = 10;
constexpr int hintGap = 4;
constexpr int emptyMargin = 18; // At both sides.
}

EmptyState::EmptyState(Symbols &symbols, QWidget *parent)
    : QWidget(parent)
    , m_symbols(symbols)
{
    setAccessibleRole(*this, QAccessible::StaticText);
}

void EmptyState::setTexts(const QString &title, const QString &hint)
{
    m_title = title;
    m_hint = hint;
    setAccessibleName(title);
    setAccessibleDescription(hint);
    update();
}

void EmptyState::setTargeted(bool targeted)
{
    m_targeted = targeted;
    update();
}

void EmptyState::setOpacity(double opacity)
{
    m_opacity = opacity;
    update();
}

void EmptyState::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(m_opacity);
    const QFont titleFont = Look::font(font(), 13, QFont::Medium);
    const QFont hintFont = Look::font(font(), 10.5);
    constexpr int flags = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap;
    const QRect room(emptyMargin, 0, width() - 2 * emptyMargin, height());
    const int titleHeight = QFontMetrics(titleFont).boundingRect(room, flags, m_title).height();
    const int hintHeight = QFontMetrics(hintFont).boundingRect(room, flags, m_hint).height();
    const int texts = titleHeight + hintGap + hintHeight;
    const int left = std::min(traySize, height() - texts - trayGap);
    const int tray = left < smallestTray ? 0 : left;
    const int head = tray > 0 ? tray + trayGap : 0;
    const int block = head + texts;
    // A little above the middle, where the eye expects it.
    int top = std::max(0, (height() - block) * 9 / 20);

    if (tray > 0)
        m_symbols.paint(painter, Symbol::Tray, QRect(0, top, width(), tray), tray,
                        m_targeted ? Brand::accent : Look::shade(palette(), 0.4));
    top += head;
    painter.setFont(titleFont);
    painter.setPen(Look::text(palette()));
    painter.drawText(QRect(emptyMargin, top, room.width(), titleHeight), flags, m_title);
    top += titleHeight + hintGap;
    painter.setFont(hintFont);
    painter.setPen(Look::secondary(palette()));
    painter.drawText(QRect(emptyMargin, top, room.width(), hintHeight), flags, m_hint);
}
