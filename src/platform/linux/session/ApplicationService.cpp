#include "platform/linux/session/ApplicationService.h"

#include "platform/linux/transfer/DropFormats.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <utility>

namespace {

/// What is no address, or a file of another machine, is left out.
QList<Address> urlsOf(const QVariant &uris)
{
    return DropFormats::urls(uris.toStringList().join(u'\n').toUtf8());
}

}

void ApplicationService::deliverTo(ServiceRequests requests)
{
    m_requests = std::move(requests);
    m_activationWaits = false;
    for (const auto &request : std::exchange(m_waiting, {}))
        request();
}

void ApplicationService::whenReady(std::function<void()> request)
{
    if (m_requests)
        request();
    else
        m_waiting.push_back(std::move(request));
}

QString ApplicationService::introspect(const QString &) const
{
    return QStringLiteral(R"(  <interface name="org.freedesktop.Application">
    <method name="Activate">
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
    <method name="Open">
      <arg name="uris" type="as" direction="in"/>
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
    <method name="ActivateAction">
      <arg name="action_name" type="s" direction="in"/>
      <arg name="parameter" type="av" direction="in"/>
      <arg name="platform_data" type="a{sv}" direction="in"/>
    </method>
  </interface>
  <interface name="app.vantleapp.Vantle">
    <method name="AddToShelf">
      <arg name="uris" type="as" direction="in"/>
      <arg name="text" type="s" direction="in"/>
      <arg name="added" type="b" direction="out"/>
    </method>
  </interface>
)");
}

/// All but AddToShelf are answered before their request, which may have to wait, is done.
bool ApplicationService::handleMessage(const QDBusMessage &call, const QDBusConnection &bus)
{
    const auto arguments = call.arguments();
    const auto is = [&](const char *interface, const char *method, const char *signature) {
        return (call.interface().isEmpty() || call.interface() == QLatin1String(interface))
            && call.member() == QLatin1String(method)
            && call.signature() == QLatin1String(signature);
    };
    const auto answer = [bus, call](const QVariantList &values) {
        if (call.isReplyRequired())
            bus.send(call.createReply(values));
    };
    constexpr char standard[] = "org.freedesktop.Application";
    constexpr char own[] = "app.vantleapp.Vantle";
    if (is(own, "AddToShelf", "ass")) {
        whenReady([this, answer, urls = urlsOf(arguments[0]), text = arguments[1].toString()] {
            answer({ m_requests->addToShelf(urls, text) });
        });
        return true;
    }
    if (is(standard, "Activate", "a{sv}")) {
        if (m_requests || !std::exchange(m_activationWaits, true))
            whenReady([this] { m_requests->activate(); });
    } else if (is(standard, "Open", "asa{sv}")) {
        whenReady([this, urls = urlsOf(arguments[0])] { m_requests->open(urls); });
    } else if (is(standard, "ActivateAction", "sava{sv}")) {
        whenReady([this, action = arguments[0].toString()] { m_requests->perform(action); });
    } else {
        // Of other interfaces the bus library knows the standard ones.
        const bool isOurs
            = call.interface() == QLatin1String(standard) || call.interface() == QLatin1String(own);
        if (isOurs && call.isReplyRequired())
            bus.send(call.createErrorReply(QDBusError::UnknownMethod,
                                           QStringLiteral("no such method with such arguments")));
        return isOurs;
    }
    answer({});
    return true;
}
