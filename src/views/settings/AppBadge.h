#pragma once

#include "platform/InstalledApplication.h"

#include <QIcon>
#include <QList>

/// What stands for an application: its icon and its name. One that is not
/// installed has its identifier only.
struct AppBadge
{
    AppBadge(const QString &bundleID, const QList<InstalledApplication> &installed);
    explicit AppBadge(const InstalledApplication &application);

    QString name;
    QIcon icon;
};
