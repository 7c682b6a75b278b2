#pragma once

#include <QByteArray>
#include <QMimeType>
#include <QString>
#include <QUrl>

/// The one place that converts between file URLs and native paths. A native path
/// is bytes, which need not be valid UTF-8; a file URL keeps every byte in its
/// percent escapes. QUrl::toLocalFile and QFile names would lose them.
namespace FilePath {

enum class Kind { File, Directory };

/// A file URL of one canonical spelling: two URLs of one path compare equal. A
/// directory's ends with a slash.
QUrl toUrl(const QByteArray &path, Kind kind = Kind::File);

/// The path of a file URL, whose host may be empty, "localhost" or this
/// machine's name; without a slash at the end, but for "/". Empty for anything
/// else and for a path that holds a zero byte.
QByteArray fromUrl(const QUrl &url);

/// A file URL as this program stores it: the canonical spelling of the lexically
/// standardised path, with a slash at the end if it had one. An invalid URL for
/// anything that fromUrl does not take.
QUrl canonical(const QUrl &url);

/// Without ".", "..", repeated slashes and a slash at the end; purely lexical.
QByteArray standardized(const QByteArray &path);

/// "/" is its own parent, and its own last component.
QByteArray parent(const QByteArray &path);
QByteArray lastComponent(const QByteArray &path);
/// Whether the path lies below that folder; both are standardised first.
bool isBelow(const QByteArray &path, const QByteArray &folder);

/// For people: UTF-8, with U+FFFD for bytes that are none.
QString display(const QByteArray &path);

/// By the name alone, as nothing may wait for the disk or trust what stands there.
QMimeType typeByName(const QByteArray &path);

/// Whether something has this name. A link counts, wherever it points, and so
/// does what cannot be told (no permission to look, a failing disk): only a name
/// that is known to be free does not exist.
bool exists(const QByteArray &path);

}
