#include "platform/linux/session/LinuxLook.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QStyle>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>

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

constexpr double smallestText = 0.5;
constexpr double largestText = 3;

using Scheme = DesktopLook::Scheme;

Scheme schemeOf(const LookSources &sources, const QString &theme)
{
    // 0 is no preference: https://flatpak.github.io/xdg-desktop-portal, "color-scheme".
    switch (
        sources.portal.value(QStringLiteral("org.freedesktop.appearance color-scheme")).toUInt()) {
    case 1:
        return Scheme::Dark;
    case 2:
        return Scheme::Light;
    default:
        break;
    }
    if (theme.isEmpty())
        return Scheme::NoPreference;
    const bool isDark = theme.contains(QLatin1String("dark"), Qt::CaseInsensitive)
        || theme.contains(QLatin1String("inverse"), Qt::CaseInsensitive);
    return isDark ? Scheme::Dark : Scheme::NoPreference;
}

/// A settings manager that gives a resolution has the user's factor in it, and the toolkit
/// scales everything by that, also at run time.
double textScaleOf(const LookSources &sources)
{
    if (sources.xsettings.value("Xft/DPI").toInt() > 0)
        return 1;
    const double scale
        = sources.portal
              .value(QStringLiteral("org.gnome.desktop.interface text-scaling-factor"), 1.0)
              .toDouble();
    return std::isfinite(scale) && scale > 0 ? std::clamp(scale, smallestText, largestText) : 1;
}

}

DesktopLook LookSources::look() const
{
    const auto isOn = [this](const char *key) { return portal.value(QLatin1String(key)).toBool(); };
    const QString theme = xsettings.value("Net/ThemeName").toString();
    DesktopLook look;
    look.scheme = schemeOf(*this, theme);
    if (isOn("org.freedesktop.appearance contrast")
        || isOn("org.gnome.desktop.a11y.interface high-contrast")
        || theme.startsWith(QLatin1String("HighContrast")))
        look.contrast = DesktopLook::Contrast::High;
    if (isOn("org.freedesktop.appearance reduced-motion")
        || !portal.value(QStringLiteral("org.gnome.desktop.interface enable-animations"), true)
                .toBool()
        || xsettings.value("Gtk/EnableAnimations", 1).toInt() == 0)
        look.motion = Motion::Reduced;
    look.textScale = textScaleOf(*this);
    return look;
}

LinuxLook::LinuxLook(SettingsManager &manager)
    : m_manager(manager)
{
    m_manager.onSettings = [this](const ManagedSettings &settings) {
        m_sources.xsettings = settings;
        update();
    };
    constexpr std::chrono::milliseconds afterTray(
        1); // A start shows its icon before anything else.
    QTimer::singleShot(afterTray, this, &LinuxLook::start);
}

void LinuxLook::start()
{
    if (!hasThemeOfItsOwn())
        m_colours = DesktopLook::Colours::Ours;
    m_manager.start();
    update();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
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
    m_question = std::make_unique<QDBusPendingCallWatcher>(
        QDBusConnection::sessionBus().asyncCall(message));
    connect(m_question.get(), &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher *call) { takePortal(call->reply()); });
}

void LinuxLook::takePortal(const QDBusMessage &reply)
{
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
