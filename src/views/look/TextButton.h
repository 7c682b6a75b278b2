#pragma once

#include <QPushButton>

#include <algorithm>

/// A push button whose text keeps its distance from the sides at any size of text: some styles
/// leave two pixels.
class TextButton final : public QPushButton
{
public:
    using QPushButton::QPushButton;

    QSize sizeHint() const override
    {
        const QSize hint = QPushButton::sizeHint();
        const int padding = fontMetrics().averageCharWidth();
        const QSize label = fontMetrics().size(Qt::TextShowMnemonic, text());
        return hint.expandedTo({ label.width() + 2 * padding, label.height() + padding });
    }
    QSize minimumSizeHint() const override { return sizeHint(); }
};
