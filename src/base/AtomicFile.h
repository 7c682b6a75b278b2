#pragma once

#include <QByteArray>
#include <QByteArrayList>

/// Replacing a file in one step: after a crash at any moment the file holds
/// either all of the old bytes or all of the new ones.
namespace AtomicFile {

/// The bytes are on the disk when this returns true. A file that exists keeps
/// its permissions where the file system has any, a new one is the user's alone;
/// of a symbolic link the target is replaced. On failure the old file is
/// untouched and errno says why. One caller at a time for each file: a killed
/// process leaves at most one file beside it, which the next write replaces.
bool write(const QByteArray &path, const QByteArray &bytes);
/// The same with all pieces, one after the other.
bool write(const QByteArray &path, const QByteArrayList &pieces);

/// Gives what the path, or the link there, finally names that name in its folder, in
/// place of what had it before. Whether nothing is left under the old name; on
/// failure errno says why.
bool setAside(const QByteArray &path, const QByteArray &name);
/// Where setAside puts it.
QByteArray besideTarget(const QByteArray &path, const QByteArray &name);

/// The path that a symbolic link finally names, whether or not anything is
/// there; the path itself if it is no link, nothing for links that go in circles.
QByteArray linkTarget(const QByteArray &path);

}
