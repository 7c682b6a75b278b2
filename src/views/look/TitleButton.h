#pragma once

#include "views/look/Symbols.h"

#include <QPushButton>

/// The shelf's title, which opens a menu: the text, a pin where it is pinned, and
/// a chevron. A title too long for it is cut in the middle. It stays pressed while its
/// menu is open. A click leaves the keyboard where it was.
class TitleButton final : public QPushButton
{
public:
    TitleButton(Symbols &symbols, QWidget *parent);

    static constexpr int padding = 6; // Before and behind what it shows.

    enum class Pin { Absent, Shown };
    void setTitle(const QString &title, Pin pin);
    /// pinned: what the pin says to who cannot see it.
    void setHelp(const QString &text, const QString &pinned);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QFont titleFont() const;
    QFont fittingFont(int room) const;
    int marksWidth() const;

    Symbols &m_symbols;
    QString m_title;
    Pin m_pin = Pin::Absent;
};
