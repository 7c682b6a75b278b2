#include "store/Characters.h"

#include <QTextBoundaryFinder>

QString Characters::first(const QString &text, qsizetype count)
{
    // The finder looks at the whole text before it starts, which may be many
    // megabytes; and a "character" of a thousand accents is none to show.
    const QString start = text.left(count * 32);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, start);
    for (qsizetype taken = 0; taken < count && finder.position() < start.size(); ++taken)
        finder.toNextBoundary();
    const QString cut = start.left(finder.position());
    return cut.isValidUtf16() ? cut : cut.chopped(1);
}
