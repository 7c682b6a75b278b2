#pragma once

#include "platform/InstalledApplication.h"

#include <QList>

/// All applications that have a desktop entry, in no order. Reads many small
/// files: worker threads only.
QList<InstalledApplication> installedApplications();
