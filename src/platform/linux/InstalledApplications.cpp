#include "platform/linux/InstalledApplications.h"

#include <gio/gio.h>

#include <memory>

namespace {

/// A themed icon's first name is the best; an icon of a file prints as its path.
QString iconOf(GAppInfo *application)
{
    GIcon *icon = g_app_info_get_icon(application);
    if (!icon)
        return {};
    if (G_IS_THEMED_ICON(icon))
        return QString::fromUtf8(g_themed_icon_get_names(G_THEMED_ICON(icon))[0]);
    const std::unique_ptr<char, decltype(&g_free)> path(g_icon_to_string(icon), g_free);
    return QString::fromUtf8(path.get());
}

}

QList<InstalledApplication> installedApplications()
{
    QList<InstalledApplication> result;
    GList *all = g_app_info_get_all();
    for (const GList *entry = all; entry; entry = entry->next) {
        auto *application = static_cast<GAppInfo *>(entry->data);
        QString identifier = QString::fromUtf8(g_app_info_get_id(application));
        if (!identifier.endsWith(QLatin1String(".desktop")))
            continue;
        identifier.chop(8);
        result.append({ identifier, QString::fromUtf8(g_app_info_get_display_name(application)),
                        iconOf(application), g_app_info_should_show(application) != 0 });
    }
    g_list_free_full(all, g_object_unref);
    return result;
}
