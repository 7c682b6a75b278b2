#include "platform/linux/GioApplications.h"

#include <QByteArray>
#include <QCoreApplication>

#include <gio/gio.h>

#include <atomic>
#include <memory>
#include <utility>

namespace {

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};

constexpr char startupIdKey[] = "vantle-startup-id";

char *startupId(GAppLaunchContext *context, GAppInfo *, GList *)
{
    return g_strdup(static_cast<const char *>(g_object_get_data(G_OBJECT(context), startupIdKey)));
}

/// A context that knows the start-up id to hand on. GIO's own knows none: that is
/// left to toolkits.
GType contextType()
{
    static const GType type = g_type_register_static_simple(
        G_TYPE_APP_LAUNCH_CONTEXT, "VantleLaunchContext", sizeof(GAppLaunchContextClass),
        [](gpointer klass, gpointer) {
            static_cast<GAppLaunchContextClass *>(klass)->get_startup_notify_id = startupId;
        },
        sizeof(GAppLaunchContext), nullptr, GTypeFlags(0));
    return type;
}

/// Unique in the session; toolkits read the time behind "_TIME".
QByteArray newStartupId(quint32 userTime)
{
    static std::atomic<int> count = 0;
    return "vantle-" + QByteArray::number(QCoreApplication::applicationPid()) + '-'
        + QByteArray::number(++count) + "_TIME" + QByteArray::number(userTime);
}

}

GioApplications::GioApplications(std::function<quint32()> userTime)
    : m_userTime(std::move(userTime))
{
}

void GioApplications::open(const QList<QUrl> &urls)
{
    const quint32 time = m_userTime();
    for (const QUrl &url : urls) {
        const std::unique_ptr<GAppLaunchContext, Unref> context(
            static_cast<GAppLaunchContext *>(g_object_new(contextType(), nullptr)));
        const QByteArray id = newStartupId(time);
        g_object_set_data_full(G_OBJECT(context.get()), startupIdKey, g_strdup(id.constData()),
                               g_free);
        g_app_info_launch_default_for_uri(url.toEncoded().constData(), context.get(), nullptr);
    }
}
