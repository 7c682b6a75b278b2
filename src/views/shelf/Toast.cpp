#include "views/shelf/Toast.h"

#include "views/look/AccessibleRole.h"
#include "views/look/LinePieces.h"
#include "views/look/Look.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr double toastDuration = 2.0;
constexpr double toastFade = 0.2;
constexpr int toastEdge = 12; // Between the toast and its parent's edges.
constexpr int toastSidePadding = 12;
constexpr int toastEndPadding = 7;
constexpr int toastRise = 6; // It comes up that far while it appears.
constexpr int mostLines = 3; // At the usual size of texts; up to two more where they are large.
constexpr int textFlags = Qt::AlignCenter | Qt::TextWordWrap;

/// Cut to what the lines can hold, with breaks where a word is longer than a line.
QString fitted(QString text, const QFontMetrics &metrics, int width)
{
    constexpr qsizetype longest = 400;
    QStringList pieces = linePieces(text.left(longest).simplified());
    for (QString &piece : pieces) {
        if (metrics.horizontalAdvance(piece.trimmed()) > width)
            piece = metrics.elidedText(piece.trimmed(), Qt::ElideMiddle, width) + u' ';
    }
    text = pieces.join(QString()).trimmed();
    const double lines = mostLines + std::clamp(2 * (Look::textScale - 1), 0.0, 2.0);
    const auto fits = [&](const QString &part) {
        const QRect room(0, 0, width, 10000);
        // Letters of another font make lines a little higher.
        return metrics.boundingRect(room, textFlags, part).height()
            < (std::floor(lines) + 0.9) * metrics.lineSpacing();
    };
    if (fits(text))
        return text;
    while (!text.isEmpty() && !fits(text + u'…'))
        text.chop(1);
    return text.trimmed() + u'…';
}

}

Toast::Toast(MainQueue &queue, QWidget *parent)
    : QWidget(parent)
    , m_queue(queue)
    , m_fade(queue)
{
    setAccessibleRole(*this, QAccessible::Notification);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

QFont Toast::textFont() const
{
    return Look::font(font(), 11.5, QFont::Medium);
}

void Toast::showText(const QString &text)
{
    m_text = text;
    m_timers.push_back(m_queue.after(toastDuration, [this, text] { expire(text); }));
    setAccessibleName(text);
    if (isVisible()) {
        // Screen readers speak a notification when it comes up, and know no other way.
        QAccessibleEvent event(this, QAccessible::ObjectShow);
        QAccessible::updateAccessibility(&event);
    }
    show();
    place();
    raise();
    fadeTo(1);
}

void Toast::expire(const QString &text)
{
    m_timers.pop_front();
    if (m_text != text)
        return;
    m_text.reset();
    fadeTo(0);
}

void Toast::fadeTo(double opacity)
{
    const double from = m_opacity;
    const auto finish = [this, opacity] {
        m_opacity = opacity;
        setVisible(opacity > 0);
        update();
    };
    if (m_motion == Motion::Reduced || from == opacity) {
        m_fade.cancel();
        finish();
        return;
    }
    const auto step = [this, from, opacity](double progress) {
        m_opacity = from + (opacity - from) * progress;
        update();
    };
    m_fade.begin(toastFade, AnimationCurve::EaseOut, step, finish);
}

void Toast::place()
{
    const QFontMetrics metrics(textFont());
    const int room = parentWidget()->width() - 2 * toastEdge - 2 * toastSidePadding;
    if (m_text)
        m_painted = fitted(*m_text, metrics, room);
    const QRect text = metrics.boundingRect(QRect(0, 0, room, 10000), textFlags, m_painted);
    const QSize size(text.width() + 2 * toastSidePadding,
                     text.height() + 2 * toastEndPadding + toastRise);
    setGeometry((parentWidget()->width() - size.width()) / 2,
                parentWidget()->height() - toastEdge - size.height(), size.width(), size.height());
}

void Toast::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && isVisible())
        place();
}

void Toast::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(m_opacity);
    const QRectF shape(0, toastRise * (1 - m_opacity), width(), height() - toastRise);
    painter.setPen(Qt::NoPen);
    // The palette turned over: it stands out on both light and dark panels.
    painter.setBrush(Look::blended(Look::text(palette()), palette().color(QPalette::Window), 0.88));
    painter.drawRoundedRect(shape, 12, 12);
    painter.setPen(palette().color(QPalette::Window));
    painter.setFont(textFont());
    // As wide as it was measured: with more room its lines would break elsewhere.
    painter.drawText(shape.adjusted(toastSidePadding - 1, 0, 1 - toastSidePadding, 0), textFlags,
                     m_painted);
}
