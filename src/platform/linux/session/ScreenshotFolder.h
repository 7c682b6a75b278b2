#pragma once

#include "platform/Directories.h"

#include <QStringList>

/// Where the running desktop's own tool writes screenshots: what its settings
/// say, else the folder "Screenshots" among the pictures, which GNOME names in
/// the user's language. The folder need not exist yet.
///
/// Sources: Spectacle's spectaclerc ("imageSaveLocation" in the group
/// "ImageSave", before version 24 "defaultSaveLocation" in "Save"), Xfce's channel
/// and older file "xfce4-screenshooter", Flameshot's "savePath". Reads a few
/// small files.
QByteArray screenshotFolder(const Directories &directories, const QStringList &desktops);
