#include "platform/linux/ApplicationService.h"

#include "platform/linux/DropFormats.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <utility>

namespace {

/// What is no address, or a file of another machine, is left out.
QList<QUrl> urlsOf(const QStringList &uris)
{
    QList<QUrl> urls;
    for (const QString &uri : uris)
        urls += DropFormats::urls(uri.toUtf8());
    return urls;
}

}

ApplicationService::ApplicationService()
{
    // Found by the bus library as children.
    new ApplicationAdaptor(*this);
    new ShelfAdaptor(*this);
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

void ApplicationService::activate()
{
    if (!m_requests && std::exchange(m_activationWaits, true))
        return;
    whenReady([this] { m_requests->activate(); });
}

void ApplicationService::open(const QStringList &uris)
{
    whenReady([this, urls = urlsOf(uris)] { m_requests->open(urls); });
}

void ApplicationService::perform(const QString &action)
{
    whenReady([this, action] { m_requests->perform(action); });
}

bool ApplicationService::addToShelf(const QStringList &uris, const QString &text)
{
    const auto urls = urlsOf(uris);
    if (m_requests)
        return m_requests->addToShelf(urls, text);
    setDelayedReply(true);
    whenReady([this, urls, text, bus = connection(), call = message()] {
        bus.send(call.createReply(m_requests->addToShelf(urls, text)));
    });
    return false;
}

ApplicationAdaptor::ApplicationAdaptor(ApplicationService &service)
    : QDBusAbstractAdaptor(&service)
    , m_service(service)
{
}

void ApplicationAdaptor::Activate(const QVariantMap &)
{
    m_service.activate();
}

void ApplicationAdaptor::Open(const QStringList &uris, const QVariantMap &)
{
    m_service.open(uris);
}

void ApplicationAdaptor::ActivateAction(const QString &name, const QVariantList &,
                                        const QVariantMap &)
{
    m_service.perform(name);
}

ShelfAdaptor::ShelfAdaptor(ApplicationService &service)
    : QDBusAbstractAdaptor(&service)
    , m_service(service)
{
}

bool ShelfAdaptor::AddToShelf(const QStringList &uris, const QString &text)
{
    return m_service.addToShelf(uris, text);
}
