#include "platform/linux/LinuxLook.h"

#include "base/MainQueue.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QPointer>
#include <QStyle>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

QStringList spaces()
{
    return { QStringLiteral("org.freedesktop.appearance"),
             QStringLiteral("org.gnome.desktop.interface"),
             QStringLiteral("org.gnome.desktop.a11y.interface") };
}

/// Whether a theme of the desktop's own gives the toolkit its colours: one that was
/// asked for by name, Plasma's, and any that draws by a style of its own.
bool hasThemeOfItsOwn()
{
    // These only bring fonts and dialogs.
    const QStringList plain { QString(), QStringLiteral("gtk3"), QStringLiteral("gnome"),
                              QStringLiteral("generic"), QStringLiteral("xdgdesktopportal") };
    return !plain.contains(qEnvironmentVariable("QT_QPA_PLATFORMTHEME"))
        || qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':').contains(QLatin1String("KDE"))
        || QApplication::style()->name().compare(QLatin1String("fusion"), Qt::CaseInsensitive) != 0;
}

}

LinuxLook::LinuxLook(MainQueue &queue, WatchConnection &connection)
    : m_xsettings(connection)
{
    m_xsettings.onSettings = [this](const XSettings::Settings &settings) {
        m_sources.xsettings = settings;
        update();
    };
    queue.post([self = QPointer(this)] {
        if (self)
            self->start();
    });
}

void LinuxLook::start()
{
    if (!hasThemeOfItsOwn())
        m_colours = DesktopLook::Colours::Ours;
    m_xsettings.start();
    if (QDBusConnection::sessionBus().isConnected())
        watchPortal();
    update();
}

void LinuxLook::watchPortal()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto *watcher
        = new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &LinuxLook::askPortal);
    // From any sender: naming the service would make the bus library look up its owner first.
    bus.connect(QString(), path, interface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QDBusMessage)));
    askPortal();
}

void LinuxLook::askPortal()
{
    auto message
        = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("ReadAll"));
    message << spaces();
    m_question
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
    connect(m_question, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher *call) {
                if (call == m_question)
                    takePortal(call->reply());
                call->deleteLater();
            });
}

void LinuxLook::takePortal(const QDBusMessage &reply)
{
    m_question = nullptr;
    if (reply.type() != QDBusMessage::ReplyMessage
        || reply.signature() != QLatin1String("a{sa{sv}}"))
        return;
    QMap<QString, QVariantMap> all;
    reply.arguments().constFirst().value<QDBusArgument>() >> all;
    m_sources.portal.clear();
    for (const QString &space : spaces()) {
        const QVariantMap values = all.value(space);
        for (auto value = values.begin(); value != values.end(); ++value)
            m_sources.portal.insert(space + u' ' + value.key(), value.value());
    }
    update();
}

void LinuxLook::settingChanged(const QDBusMessage &signal)
{
    if (signal.signature() != QLatin1String("ssv"))
        return;
    const QString space = signal.arguments().at(0).toString();
    if (!spaces().contains(space))
        return;
    m_sources.portal.insert(space + u' ' + signal.arguments().at(1).toString(),
                            signal.arguments().at(2).value<QDBusVariant>().variant());
    update();
}

void LinuxLook::update()
{
    DesktopLook next = m_sources.look();
    next.colours = m_colours;
    if (next != look.value())
        look.set(next);
}
