#include "base/FilePath.h"
#include "platform/Applications.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <atomic>
#include <functional>
#include <utility>

namespace {

constexpr int revealLimit = 10000; // Milliseconds for a file manager, which may have to start.
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

/// The caller's own.
GAppLaunchContext *newContext(quint32 userTime)
{
    auto *context = static_cast<GAppLaunchContext *>(g_object_new(contextType(), nullptr));
    const QByteArray id = newStartupId(userTime);
    g_object_set_data_full(G_OBJECT(context), startupIdKey, g_strdup(id.constData()), g_free);
    return context;
}

/// The content type of a file, or the one that stands for an address: by the name
/// where that tells it, else by a look at the file.
QByteArray contentType(const QUrl &url)
{
    if (!url.isLocalFile())
        return "x-scheme-handler/" + url.scheme().toUtf8();
    gboolean isUncertain = TRUE;
    g_autofree char *named = g_content_type_guess(
        FilePath::lastComponent(FilePath::fromUrl(url)).constData(), nullptr, 0, &isUncertain);
    if (isUncertain == FALSE && !url.path().endsWith(u'/'))
        return named;
    g_autoptr(GFile) file = g_file_new_for_uri(url.toEncoded().constData());
    g_autoptr(GFileInfo) info = g_file_query_info(file, G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                                                  G_FILE_QUERY_INFO_NONE, nullptr, nullptr);
    const char *type = info ? g_file_info_get_content_type(info) : nullptr;
    return type ? type : named;
}

OpenWithApp described(GAppInfo *info)
{
    GIcon *icon = g_app_info_get_icon(info);
    // A name of a theme or the path of a file, as entries have it.
    g_autofree char *picture = icon ? g_icon_to_string(icon) : nullptr;
    return { QString::fromUtf8(g_app_info_get_id(info)),
             QString::fromUtf8(g_app_info_get_display_name(info)), QString::fromUtf8(picture) };
}

bool takesFiles(GAppInfo *info)
{
    return g_app_info_get_id(info) != nullptr
        && (g_app_info_supports_files(info) != FALSE || g_app_info_supports_uris(info) != FALSE);
}

/// GIO's knowledge of types and applications, and the file manager by its bus name.
/// In a module of its own, which LateApplications loads.
class GioApplications final : public Applications
{
public:
    explicit GioApplications(std::function<quint32()> userTime)
        : m_userTime(std::move(userTime))
    {
    }
    void open(const QList<Address> &urls) override;
    void open(const QList<Address> &urls, const QString &application) override;
    QList<OpenWithApp> thatOpen(const QUrl &url, int limit) override;
    QList<InstalledApplication> all() override;
    void reveal(const QList<QUrl> &urls) override;

private:
    std::function<quint32()> m_userTime;
};

}

void GioApplications::open(const QList<Address> &urls)
{
    const quint32 time = m_userTime();
    for (const Address &url : urls) {
        g_autoptr(GAppLaunchContext) context = newContext(time);
        g_app_info_launch_default_for_uri(url.text.constData(), context, nullptr);
    }
}

void GioApplications::open(const QList<Address> &urls, const QString &application)
{
    g_autoptr(GDesktopAppInfo) info = g_desktop_app_info_new(application.toUtf8().constData());
    if (!info)
        return;
    QByteArrayList addresses;
    for (const Address &url : urls)
        addresses.append(url.text);
    g_autoptr(GList) list = nullptr;
    for (QByteArray &address : addresses)
        list = g_list_append(list, address.data());
    g_autoptr(GAppLaunchContext) context = newContext(m_userTime());
    g_app_info_launch_uris(G_APP_INFO(info), list, context, nullptr);
}

QList<OpenWithApp> GioApplications::thatOpen(const QUrl &url, int limit)
{
    const QByteArray type = contentType(url);
    g_autolist(GAppInfo) all = g_app_info_get_all_for_type(type.constData());
    g_autoptr(GAppInfo) first = g_app_info_get_default_for_type(type.constData(), FALSE);
    QList<OpenWithApp> found;
    for (GList *link = all; link != nullptr; link = link->next) {
        auto *info = static_cast<GAppInfo *>(link->data);
        if (!takesFiles(info))
            continue;
        if (first && g_app_info_equal(info, first) != FALSE)
            found.prepend(described(info));
        else
            found.append(described(info));
    }
    return found.mid(0, limit);
}

QList<InstalledApplication> GioApplications::all()
{
    QList<InstalledApplication> result;
    g_autolist(GAppInfo) all = g_app_info_get_all();
    for (const GList *link = all; link != nullptr; link = link->next) {
        auto *info = static_cast<GAppInfo *>(link->data);
        const OpenWithApp application = described(info);
        if (!application.identifier.endsWith(QLatin1String(".desktop")))
            continue;
        result.append({ application.identifier.chopped(8), application.name, application.icon,
                        g_app_info_should_show(info) != FALSE });
    }
    return result;
}

void GioApplications::reveal(const QList<QUrl> &urls)
{
    QStringList addresses;
    QList<Address> folders;
    for (const QUrl &url : urls) {
        addresses.append(QString::fromLatin1(url.toEncoded()));
        const QUrl folder
            = FilePath::toUrl(FilePath::parent(FilePath::fromUrl(url)), FilePath::Kind::Directory);
        if (!folders.contains(folder))
            folders.append(folder);
    }
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("/org/freedesktop/FileManager1"),
                                               QStringLiteral("org.freedesktop.FileManager1"),
                                               QStringLiteral("ShowItems"));
    call << addresses << QString::fromLatin1(newStartupId(m_userTime()));
    const auto reply = QDBusConnection::sessionBus().call(call, QDBus::Block, revealLimit);
    if (reply.type() != QDBusMessage::ReplyMessage)
        open(folders);
}

/// What the program looks up in the module.
extern "C" Q_DECL_EXPORT Applications *vantleApplications(const std::function<quint32()> &userTime);

Applications *vantleApplications(const std::function<quint32()> &userTime)
{
    return new GioApplications(userTime);
}
