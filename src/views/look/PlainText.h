#pragma once

#include <QLabel>

/// Names come from files, pages and archives, and may look like markup. The toolkit would
/// follow it: open what a picture names, or decode one that is written out. So texts are
/// shown through these alone; tools/check_plain_text.py forbids the raw calls.
class PlainLabel : public QLabel
{
public:
    explicit PlainLabel(QWidget *parent = nullptr)
        : PlainLabel(QString(), parent)
    {
    }
    explicit PlainLabel(const QString &text, QWidget *parent = nullptr)
        : QLabel(parent)
    {
        setTextFormat(Qt::PlainText);
        setText(text);
    }
};

namespace ToolTip {

/// The text as a tool tip shows it unchanged: no markup, in lines that fit on a screen.
QString plain(const QString &text);
void set(QWidget &widget, const QString &text);
/// At a place on the screen, until the pointer leaves that part of the widget.
void show(const QPoint &at, const QString &text, QWidget &widget, const QRect &part);

}
