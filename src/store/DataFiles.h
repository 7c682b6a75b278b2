#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/// Files of the data folder by native path. Nothing here waits for what is not a
/// plain file.
namespace DataFiles {

/// None if it is not a plain file or cannot be read to its end.
std::optional<QByteArray> read(const QByteArray &path);

/// Makes a file that is on the disk when this returns true; on failure none is
/// left. The folder is made where it is missing. Readable as the user's umask
/// says, since people copy such files into other folders.
bool writeNew(const QByteArray &path, const QByteArray &bytes);

/// With the folders above it, for the user alone where they are new.
void makeFolder(const QByteArray &path);

/// The names in it, hidden ones too.
QList<QByteArray> namesIn(const QByteArray &folder);

/// With everything in it; a symbolic link goes, its target stays.
void remove(const QByteArray &path);

}
