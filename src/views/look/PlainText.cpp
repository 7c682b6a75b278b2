#include "views/look/PlainText.h"

#include <QTextBoundaryFinder>
#include <QToolTip>

namespace {

constexpr qsizetype longest = 1000; // Characters; the middle goes first.
constexpr int lineLength = 80;
constexpr QChar wordJoiner(0x2060); // Shows nothing.

QString broken(const QString &text)
{
    QString result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    while (text.size() - start > lineLength) {
        finder.setPosition(start + lineLength);
        if (!finder.isAtBoundary())
            finder.toPreviousBoundary();
        // A character may be of any length.
        const qsizetype end = finder.position() > start ? finder.position() : start + lineLength;
        result += text.sliced(start, end - start) + u'\n';
        start = end;
    }
    return result + text.sliced(start);
}

}

/// A tool tip guesses whether its text is markup, and cannot be told. What follows a "<"
/// is a tag only if it is a letter.
QString ToolTip::plain(const QString &text)
{
    QString result = text;
    if (result.size() > longest)
        result = result.first(longest / 2) + u'…' + result.last(longest / 2);
    for (QChar &c : result) {
        if (c != u'\n' && c.category() == QChar::Other_Control)
            c = u' ';
    }
    if (Qt::mightBeRichText(result)) {
        for (const QChar mark : { u'<', u'&' })
            result.replace(mark, QString(mark) + wordJoiner);
    }
    return broken(result);
}

void ToolTip::set(QWidget &widget, const QString &text)
{
    widget.setToolTip(plain(text));
}

void ToolTip::show(const QPoint &at, const QString &text, QWidget &widget, const QRect &part)
{
    QToolTip::showText(at, plain(text), &widget, part);
}
