#pragma once

#include "views/look/PlainText.h"

#include <QWidget>

class QVBoxLayout;

/// Puts its text at the layout's leading edge, whichever way the text itself reads.
void alignToLeading(QLabel &label);

/// Text of another size than that of the desktop.
class SizedLabel : public PlainLabel
{
public:
    SizedLabel(double factor, QFont::Weight weight, QWidget *parent = nullptr);

    /// Takes the desktop's size anew: a size that is set no longer follows it by itself.
    void fit();

private:
    double m_factor;
    QFont::Weight m_weight;
};

/// Text that comes second to what stands above it.
class Note final : public SizedLabel
{
public:
    explicit Note(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

/// A titled group of the form: a card with one row below the other.
class Section final : public QWidget
{
public:
    explicit Section(QWidget *parent = nullptr);

    QLabel *title() const { return m_title; }
    void addRow(QWidget *row);
    /// A row of a label and a control at its end; the label names the control.
    /// named: the part of the control that the label is for.
    QLabel *addRow(QWidget *control, QWidget *named);
    /// Says more about the row that was added last.
    Note *addNote();

private:
    class Card;

    QLabel *m_title;
    Card *m_card;
};
