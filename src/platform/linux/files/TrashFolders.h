#pragma once

#include "platform/linux/files/MountTable.h"

#include <QByteArray>
#include <QList>

/// The trash: the desktop's, which is one in the user's home and at the top of
/// each other file system either ".Trash/UID" or ".Trash-UID", and the folders
/// ".Trash" and ".Trashes" in which other systems keep theirs.
class TrashFolders
{
public:
    TrashFolders(const QByteArray &homeTrash, const Mounts &mounts);

    bool hold(const QByteArray &path) const;
    /// Where what was just thrown away lies, if it was on the file system with these roots.
    QList<QByteArray> contents(const QList<QByteArray> &roots) const;

private:
    QList<QByteArray> m_home; // As it is called, and without links.
    const Mounts &m_mounts;
};
