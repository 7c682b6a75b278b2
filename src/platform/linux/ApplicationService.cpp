#include "platform/linux/ApplicationService.h"

#include <utility>

ApplicationService::ApplicationService()
{
    new ApplicationAdaptor(*this); // Found by the bus library as a child.
}

void ApplicationService::activate()
{
    if (m_onActivate)
        m_onActivate();
    else
        m_pending = true;
}

void ApplicationService::deliverTo(std::function<void()> onActivate)
{
    m_onActivate = std::move(onActivate);
    if (m_onActivate && std::exchange(m_pending, false))
        m_onActivate();
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
