#include "views/onboarding/WelcomePage.h"

#include "views/look/AccessibleRole.h"
#include "views/look/LinePieces.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QEvent>
#include <QLabel>

#include <algorithm>

namespace {

constexpr int topGap = 24;
constexpr int titleGap = 8;
constexpr int extrasGap = 18;
constexpr int sideMargin = 56;
constexpr int extrasAir = 12; // More than it needs at least.

/// The least that needs no further line, so that all lines are about equally long.
int balancedWidth(const QLabel &label, int room)
{
    int least = room / 2;
    for (const QString &piece : linePieces(label.text()))
        least = std::max(least, label.fontMetrics().horizontalAdvance(piece.trimmed()));
    int width = room;
    while (width - 8 > least && label.heightForWidth(width - 8) == label.heightForWidth(room))
        width -= 8;
    return width;
}

}

WelcomePage::WelcomePage(QWidget *scene, QWidget *extras, QWidget *parent)
    : QWidget(parent)
    , m_scene(scene)
    , m_extras(extras)
    , m_title(new PlainLabel(this))
    , m_subtitle(new PlainLabel(this))
{
    scene->setParent(this);
    if (extras)
        extras->setParent(this);
    for (auto *label : { m_title, m_subtitle }) {
        label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        label->setWordWrap(true);
    }
    setFonts();
    // Screen readers speak it when the page comes up: the keyboard stays where it was.
    setAccessibleRole(*this, QAccessible::Notification);
}

void WelcomePage::setFonts()
{
    m_title->setFont(Look::font(font(), 23, QFont::DemiBold));
    m_subtitle->setFont(Look::font(font(), 14));
    QPalette soft = palette();
    soft.setColor(QPalette::WindowText,
                  Look::blended(Look::text(soft), soft.color(QPalette::Window),
                                Look::isHighContrast(soft) ? 1 : 0.72));
    m_subtitle->setPalette(soft);
}

void WelcomePage::setTexts(const QString &title, const QString &subtitle)
{
    m_title->setText(title);
    m_subtitle->setText(subtitle);
    setAccessibleName(title);
    setAccessibleDescription(subtitle);
    place();
}

int WelcomePage::textHeight(int width) const
{
    const int room = width - 2 * sideMargin;
    int height
        = topGap + m_title->heightForWidth(room) + titleGap + m_subtitle->heightForWidth(room);
    if (m_extras)
        height += extrasGap
            + m_extras->heightForWidth(std::min(room, m_extras->sizeHint().width() + extrasAir));
    return height;
}

void WelcomePage::setHeroHeight(int height, int gap)
{
    m_heroHeight = height;
    m_gap = gap;
    place();
}

void WelcomePage::place()
{
    const int room = width() - 2 * sideMargin;
    if (room <= 0)
        return;
    m_scene->setGeometry(0, 0, width(), m_heroHeight);
    int top = m_heroHeight + topGap + m_gap;
    for (auto *label : { m_title, m_subtitle }) {
        const int needed = label->heightForWidth(room);
        const int width = balancedWidth(*label, room);
        label->setGeometry((this->width() - width) / 2, top, width, needed);
        top += needed + titleGap;
    }
    if (m_extras) {
        const int extras = std::min(room, m_extras->sizeHint().width() + extrasAir);
        m_extras->setGeometry((width() - extras) / 2, top - titleGap + extrasGap, extras,
                              m_extras->heightForWidth(extras));
    }
}

void WelcomePage::resizeEvent(QResizeEvent *)
{
    place();
}

void WelcomePage::changeEvent(QEvent *event)
{
    // The labels' own changes do not come here.
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        setFonts();
    QWidget::changeEvent(event);
}
