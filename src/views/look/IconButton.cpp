#include "views/look/IconButton.h"

#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QEvent>
#include <QPainter>

IconButton::IconButton(Symbols &symbols, Symbol symbol, double symbolSize, QWidget *parent)
    : QAbstractButton(parent)
    , m_symbols(symbols)
    , m_symbol(symbol)
    , m_symbolSize(symbolSize)
{
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setFixedSize(sizeHint());
    setAccessibleRole(*this, QAccessible::Button, [this] { click(); });
}

void IconButton::setHelp(const QString &text)
{
    ToolTip::set(*this, text);
    setAccessibleName(text);
}

QSize IconButton::sizeHint() const
{
    return QSize(24, 24) * Look::symbolScale();
}

void IconButton::changeEvent(QEvent *event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        setFixedSize(sizeHint());
}

void IconButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor text = Look::text(palette());
    const QRectF shape = QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75);
    painter.setPen(hasFocus() ? QPen(Look::ring(palette()), 1.5) : Qt::NoPen);
    painter.setBrush(isDown()           ? Look::shade(palette(), 0.16)
                         : underMouse() ? Look::shade(palette(), 0.08)
                                        : QColor(Qt::transparent));
    painter.drawRoundedRect(shape, 6, 6);
    const bool clear = underMouse() || isDown() || hasFocus();
    m_symbols.paint(painter, m_symbol, rect(), m_symbolSize * Look::symbolScale(),
                    clear ? text : Look::secondary(palette()));
}
