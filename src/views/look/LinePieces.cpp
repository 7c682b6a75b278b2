#include "views/look/LinePieces.h"

#include <QTextBoundaryFinder>

QStringList linePieces(const QString &text)
{
    QStringList pieces;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
    qsizetype start = 0;
    while (finder.toNextBoundary() > 0) {
        pieces.append(text.mid(start, finder.position() - start));
        start = finder.position();
    }
    return pieces;
}
