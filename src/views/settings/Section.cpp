#include "views/settings/Section.h"

#include "views/look/AccessibleRole.h"
#include "views/look/Look.h"
#include "views/look/PlainText.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace {

constexpr int margin = 12; // Between the card's edge and its rows.

}

void alignToLeading(QLabel &label)
{
    label.setAlignment(Qt::AlignVCenter | Qt::Alignment(Look::leading(label.layoutDirection())));
}

SizedLabel::SizedLabel(double factor, QFont::Weight weight, QWidget *parent)
    : PlainLabel(parent)
    , m_factor(factor)
    , m_weight(weight)
{
    fit();
}

void SizedLabel::fit()
{
    QFont sized;
    sized.setPointSizeF(QApplication::font().pointSizeF() * m_factor);
    sized.setWeight(m_weight);
    setFont(sized);
}

Note::Note(QWidget *parent)
    : SizedLabel(0.9, QFont::Normal, parent)
{
    setWordWrap(true);
}

/// By itself: a colour that is set would not follow the palette.
void Note::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(Look::secondary(palette()));
    painter.drawText(contentsRect(), Qt::TextWordWrap | Look::leading(layoutDirection()), text());
}

/// Rounded, with a line between its rows.
class Section::Card final : public QWidget
{
public:
    explicit Card(QWidget *parent)
        : QWidget(parent)
        , rows(new QVBoxLayout(this))
    {
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSpacing(0);
    }

    QVBoxLayout *rows;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Look::shade(palette(), 0.14));
        painter.setBrush(Look::card(palette()));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
        bool isFirst = true;
        for (int i = 0; i < rows->count(); ++i) {
            const QWidget *row = rows->itemAt(i)->widget();
            if (!row->isVisibleTo(this))
                continue;
            if (!isFirst)
                painter.fillRect(QRectF(margin, row->y(), width() - 2 * margin, 1),
                                 Look::shade(palette(), 0.1));
            isFirst = false;
        }
    }
};

Section::Section(QWidget *parent)
    : QWidget(parent)
    , m_title(new PlainLabel(this))
    , m_card(new Card(this))
{
    setAccessibleRole(*this, QAccessible::Grouping);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(m_title);
    layout->addWidget(m_card);
    QFont bold; // The weight alone: the size follows the desktop's.
    bold.setWeight(QFont::DemiBold);
    m_title->setFont(bold);
    m_title->setIndent(margin);
    m_title->setWordWrap(true);
    alignToLeading(*m_title);
}

/// Every row has a frame that hides with it and takes notes.
void Section::addRow(QWidget *row)
{
    auto *frame = new QWidget(m_card);
    auto *layout = new QVBoxLayout(frame);
    layout->setContentsMargins(margin, 8, margin, 8);
    layout->setSpacing(4);
    // What is narrower than the row stands at its beginning.
    const bool isNarrow = row->sizePolicy().horizontalPolicy() == QSizePolicy::Maximum;
    layout->addWidget(row, 0, isNarrow ? Qt::AlignLeft : Qt::Alignment());
    m_card->rows->addWidget(frame);
}

QLabel *Section::addRow(QWidget *control, QWidget *named)
{
    auto *row = new QWidget;
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    auto *label = new PlainLabel(row);
    label->setWordWrap(true);
    label->setBuddy(named);
    alignToLeading(*label);
    layout->addWidget(label, 1);
    layout->addWidget(control);
    addRow(row);
    return label;
}

Note *Section::addNote()
{
    auto *note = new Note;
    m_card->rows->itemAt(m_card->rows->count() - 1)->widget()->layout()->addWidget(note);
    return note;
}
