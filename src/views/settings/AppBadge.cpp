#include "views/settings/AppBadge.h"

#include <algorithm>

namespace {

QIcon iconNamed(const QString &icon)
{
    if (icon.startsWith(u'/'))
        return QIcon(icon);
    return QIcon::fromTheme(icon, QIcon::fromTheme(QStringLiteral("application-x-executable")));
}

}

AppBadge::AppBadge(const InstalledApplication &application)
    : name(application.name)
    , icon(iconNamed(application.icon))
{
}

AppBadge::AppBadge(const QString &bundleID, const QList<InstalledApplication> &installed)
    : name(bundleID)
{
    const auto found
        = std::find_if(installed.begin(), installed.end(),
                       [&](const auto &application) { return application.identifier == bundleID; });
    if (found != installed.end())
        *this = AppBadge(*found);
}
