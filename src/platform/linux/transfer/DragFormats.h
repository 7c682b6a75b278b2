#pragma once

#include "platform/Address.h"

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
    QByteArray path; // Of the file whose content it is, where that is still to be read.
};

inline constexpr qsizetype contentCap = 32 << 20; // Bytes of a file that are offered as content.

/// In the order in which targets should prefer them. Text is offered for links and
/// for a single text of ours, which lies in that folder: many targets take text
/// before files, and a path is not what they want. A single picture offers its bytes
/// after its file. Links without files are offered as a browser offers them.
QList<Format> formatsFor(const QList<Address> &urls, const QByteArray &textFolder);

/// The same for the clipboard, where text is what an editor pastes: a path or an
/// address a line, or the single text itself. The forms that file managers take hold the files
/// alone, marked as copied.
QList<Format> clipboardFormatsFor(const QList<Address> &urls, const QByteArray &textFolder);

/// A path or an address a line, alone.
QList<Format> textFormatsFor(const QList<Address> &urls);

}
