#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

/// In what forms a drag and the clipboard offer addresses to other programs.
namespace DragFormats {

struct Format
{
    QString type;
    QByteArray data;
};

/// In the order in which targets should prefer them. Text is offered for links
/// only: many targets take text before files, and a path is not what they want.
/// Links without files are offered as a browser offers them.
QList<Format> formatsFor(const QList<QUrl> &urls);

/// The same for the clipboard, where text is what an editor pastes: a path or an
/// address a line. The forms that file managers take hold the files alone, marked
/// as copied.
QList<Format> clipboardFormatsFor(const QList<QUrl> &urls);

/// That text alone.
QList<Format> textFormatsFor(const QList<QUrl> &urls);

}
