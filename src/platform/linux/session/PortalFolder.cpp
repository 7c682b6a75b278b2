#include "platform/linux/session/PortalFolder.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QUuid>
#include <QWidget>

#include <utility>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

}

void PortalFolder::ask(const QDBusConnection &bus, QWidget &window, const QString &handle,
                       const QString &title, std::function<void(const QUrl &)> chosen,
                       std::function<void()> unavailable)
{
    if (window.findChild<PortalFolder *>())
        return;
    // The window owns it.
    new PortalFolder(bus, window, handle, title, std::move(chosen), std::move(unavailable));
}

/// The answer may come before the call returns: it is listened for at the place that the
/// portal derives from our name and token.
PortalFolder::PortalFolder(QDBusConnection bus, QWidget &window, const QString &handle,
                           const QString &title, std::function<void(const QUrl &)> chosen,
                           std::function<void()> unavailable)
    : QObject(&window)
    , m_bus(std::move(bus))
    , m_chosen(std::move(chosen))
    , m_unavailable(std::move(unavailable))
{
    auto *portal = new QDBusServiceWatcher(service, m_bus,
                                           QDBusServiceWatcher::WatchForUnregistration, this);
    connect(portal, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { end(m_unavailable); });
    const QString token = QStringLiteral("vantle") + QUuid::createUuid().toString(QUuid::Id128);
    listenAt(portalPath + QStringLiteral("/request/")
             + m_bus.baseService().mid(1).replace(u'.', u'_') + u'/' + token);
    auto message = QDBusMessage::createMethodCall(
        service, portalPath, QStringLiteral("org.freedesktop.portal.FileChooser"),
        QStringLiteral("OpenFile"));
    message << handle << title
            << QVariantMap { { QStringLiteral("handle_token"), token },
                             { QStringLiteral("directory"), true },
                             { QStringLiteral("modal"), true } };
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &PortalFolder::answered);
}

void PortalFolder::answered(QDBusPendingCallWatcher *call)
{
    const QDBusPendingReply<QDBusObjectPath> reply = *call;
    if (reply.isError())
        end(m_unavailable);
    else if (reply.value().path() != m_path)
        listenAt(reply.value().path()); // As portals before version 0.9 have it.
}

void PortalFolder::listenAt(const QString &path)
{
    m_path = path;
    m_bus.connect(service, path, QStringLiteral("org.freedesktop.portal.Request"),
                  QStringLiteral("Response"), this, SLOT(respond(uint, QVariantMap)));
}

void PortalFolder::respond(uint response, const QVariantMap &results)
{
    const auto uris = results.value(QStringLiteral("uris")).toStringList();
    if (response > 1) // 1 is the user's.
        end(m_unavailable);
    else if (response == 0 && !uris.isEmpty())
        end([&] { m_chosen(QUrl::fromEncoded(uris.first().toUtf8())); });
    else
        end([] {});
}

/// Once. What comes then may be a dialog, in which this is still to be deleted.
void PortalFolder::end(const std::function<void()> &then)
{
    if (!parent())
        return;
    setParent(nullptr);
    deleteLater();
    then();
}
