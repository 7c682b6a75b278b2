#include "platform/linux/PortalFolder.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUuid>
#include <QWidget>

#include <utility>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

}

void PortalFolder::ask(QWidget &window, const QString &title,
                       std::function<void(const QUrl &)> chosen, std::function<void()> unavailable)
{
    auto *question = new PortalFolder(window, std::move(chosen), std::move(unavailable));
    question->call(QStringLiteral("x11:") + QString::number(window.winId(), 16), title);
}

PortalFolder::PortalFolder(QWidget &window, std::function<void(const QUrl &)> chosen,
                           std::function<void()> unavailable)
    : QObject(&window)
    , m_chosen(std::move(chosen))
    , m_unavailable(std::move(unavailable))
{
}

/// The answer may come before the call returns: it is listened for at the place that the
/// portal derives from our name and token.
void PortalFolder::call(const QString &window, const QString &title)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const QString token = QStringLiteral("vantle") + QUuid::createUuid().toString(QUuid::Id128);
    listenAt(portalPath + QStringLiteral("/request/") + bus.baseService().mid(1).replace(u'.', u'_')
             + u'/' + token);
    auto message = QDBusMessage::createMethodCall(
        service, portalPath, QStringLiteral("org.freedesktop.portal.FileChooser"),
        QStringLiteral("OpenFile"));
    message << window << title
            << QVariantMap { { QStringLiteral("handle_token"), token },
                             { QStringLiteral("directory"), true },
                             { QStringLiteral("modal"), true } };
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &PortalFolder::answered);
}

void PortalFolder::answered(QDBusPendingCallWatcher *call)
{
    const QDBusPendingReply<QDBusObjectPath> reply = *call;
    if (reply.isError()) {
        deleteLater();
        m_unavailable();
    } else if (reply.value().path() != m_path) {
        listenAt(reply.value().path()); // As portals before version 0.9 have it.
    }
}

void PortalFolder::listenAt(const QString &path)
{
    m_path = path;
    QDBusConnection::sessionBus().connect(
        service, path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"),
        this, SLOT(respond(uint, QVariantMap)));
}

void PortalFolder::respond(uint response, const QVariantMap &results)
{
    deleteLater();
    const auto uris = results.value(QStringLiteral("uris")).toStringList();
    if (response == 0 && !uris.isEmpty())
        m_chosen(QUrl::fromEncoded(uris.first().toUtf8()));
}
