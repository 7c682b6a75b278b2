#pragma once

#include "platform/Directories.h"

#include <QByteArray>

/// Where the program's data lies: absolute native paths without a slash at the end.
struct AppPaths
{
    explicit AppPaths(const Directories &directories)
        : dataDir(directories.data + "/Vantle")
        , oldDataDir(directories.data + "/Shelf")
    {
    }

    QByteArray dataDir;
    QByteArray oldDataDir; // The predecessor's.
};
