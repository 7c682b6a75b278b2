#pragma once

#include <QString>

/// An application of the desktop, as its desktop entry tells.
struct InstalledApplication
{
    QString identifier; // The entry's id without ".desktop".
    QString name; // In the desktop's language.
    QString icon; // A name in the icon theme, or a file's path.
    bool isInMenus = true;
};
