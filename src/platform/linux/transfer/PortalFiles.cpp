#include "platform/linux/transfer/PortalFiles.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>
#include <QStringList>
#include <QVariantMap>

#include <fcntl.h>

namespace {

constexpr int callLimit = 3000; // Milliseconds.
constexpr qsizetype filesPerCall = 16; // A D-Bus message carries only so many descriptors.

QString service()
{
    return QStringLiteral("org.freedesktop.portal.Documents");
}

QDBusMessage call(const QString &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(
        service(), QStringLiteral("/org/freedesktop/portal/documents"),
        QStringLiteral("org.freedesktop.portal.FileTransfer"), method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message, QDBus::Block, callLimit);
}

/// The file itself is not opened: an O_PATH descriptor only names it.
std::optional<QList<QDBusUnixFileDescriptor>> descriptors(const QByteArrayList &paths)
{
    QList<QDBusUnixFileDescriptor> list;
    for (const QByteArray &path : paths) {
        const int descriptor = open(path.constData(), O_PATH | O_CLOEXEC);
        if (descriptor < 0)
            return std::nullopt;
        QDBusUnixFileDescriptor owned;
        owned.giveFileDescriptor(descriptor);
        list.append(owned);
    }
    return list;
}

}

PortalFiles::PortalFiles()
{
    qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
    for (const char *method : { "ListNames", "ListActivatableNames" }) {
        const auto message = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QLatin1String(method));
        auto *watcher
            = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message));
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished,
                         [available = m_available](QDBusPendingCallWatcher *finished) {
                             const QDBusPendingReply<QStringList> names = *finished;
                             if (names.isValid() && names.value().contains(service()))
                                 *available = true;
                             finished->deleteLater();
                         });
    }
}

std::optional<QByteArrayList> PortalFiles::retrieve(const QByteArray &key)
{
    const QDBusReply<QStringList> reply
        = call(QStringLiteral("RetrieveFiles"), { QString::fromUtf8(key), QVariantMap() });
    if (!reply.isValid() || reply.value().isEmpty())
        return std::nullopt;
    QByteArrayList paths;
    for (const QString &path : reply.value())
        paths.append(path.toUtf8());
    return paths;
}

std::optional<QByteArray> PortalFiles::transfer(const QByteArrayList &paths)
{
    const QDBusReply<QString> key = call(QStringLiteral("StartTransfer"),
                                         { QVariantMap { { QStringLiteral("autostop"), true } } });
    if (!key.isValid())
        return std::nullopt;
    for (qsizetype from = 0; from < paths.size(); from += filesPerCall) {
        const auto some = descriptors(paths.mid(from, filesPerCall));
        if (!some)
            return std::nullopt;
        const auto reply = call(QStringLiteral("AddFiles"),
                                { key.value(), QVariant::fromValue(*some), QVariantMap() });
        if (reply.type() != QDBusMessage::ReplyMessage)
            return std::nullopt;
    }
    return key.value().toUtf8();
}
