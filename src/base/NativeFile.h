#pragma once

#include "base/Descriptor.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QList>

#include <optional>

/// Files and folders at native paths. Nothing here waits for what is no plain
/// file: a pipe or a device at a path is unreadable.
namespace NativeFile {

enum class Failure { Missing, Unreadable };

struct Content
{
    std::optional<QByteArray> bytes;
    Failure failure = Failure::Missing; // Where there are no bytes.
};

/// Bytes: what is longer is neither read nor written whole.
constexpr qsizetype largest = 256 << 20;

/// Opens a regular file for reading; where there is none, errno says why. What is no regular
/// file would be waited for, or do something.
Descriptor open(const QByteArray &path);

/// Reads a regular file to its end.
Content read(const QByteArray &path);

/// Makes a file that is on the disk when this returns true; on failure none is
/// left, and errno says why: EEXIST where the name is taken, by whatever. The folder
/// is made where it is missing. Both are for the user alone.
bool writeNew(const QByteArray &path, const QByteArray &bytes);

/// Opens a file of the user's alone for writing, under a name that nothing has.
/// -1 on failure, and errno says why.
int create(const QByteArray &path);

/// Writes all bytes to the disk and closes the open file, whatever happens. On
/// failure errno says why.
bool writeAndClose(int file, const QByteArrayList &pieces);

/// Makes the folder and those above it, for the user alone where they are new;
/// whether it is there. On failure errno says why.
bool makeFolder(const QByteArray &path);

/// A folder that is the program's own: one that others may enter is closed to
/// them, unless it is a link by which the user keeps the data elsewhere.
bool makePrivateFolder(const QByteArray &path);

/// Without it a new name may be lost in a power cut. Some file systems cannot do
/// it; the file itself is complete in any case.
void syncFolder(const QByteArray &folder);

/// The names in it, hidden ones too.
QList<QByteArray> namesIn(const QByteArray &folder);

/// With everything in it; a symbolic link goes, its target stays.
void remove(const QByteArray &path);

/// The same with what the relative path names below the folder, but only where
/// neither the folder nor anything on the way is a symbolic link.
void removeBelow(const QByteArray &folder, const QByteArray &relative);

}
