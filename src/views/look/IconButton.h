#pragma once

#include "views/look/Symbols.h"

#include <QAbstractButton>

/// A flat button with one symbol: a soft square under the pointer, a ring while
/// the keyboard is on it. A click leaves the keyboard where it was.
class IconButton final : public QAbstractButton
{
    Q_OBJECT

public:
    IconButton(Symbols &symbols, Symbol symbol, double symbolSize, QWidget *parent);

    /// What tooltip and screen reader say.
    void setHelp(const QString &text);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    Symbols &m_symbols;
    Symbol m_symbol;
    double m_symbolSize; // Points, at the usual size of texts.
};
