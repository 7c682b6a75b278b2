#pragma once

#include <QWidget>

class Symbols;

/// What an empty shelf shows: a tray, and two lines that say what to do.
class EmptyState final : public QWidget
{
public:
    EmptyState(Symbols &symbols, QWidget *parent);

    void setTexts(const QString &title, const QString &hint);
    void setTargeted(bool targeted);
    void setOpacity(double opacity);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Symbols &m_symbols;
    QString m_title;
    QString m_hint;
    bool m_targeted = false;
    double m_opacity = 1;
};
