#pragma once

#include "platform/linux/MountTable.h"

#include <QByteArray>

/// The desktop's trash: one in the user's home, and at the top of each other file
/// system either ".Trash/UID" or ".Trash-UID".
namespace TrashFolders {

bool hold(const QByteArray &path, const QByteArray &homeTrash, const Mounts &mounts);

}
