#pragma once

#include "platform/Address.h"

#include <QDBusVirtualObject>
#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>
#include <vector>

/// What other programs may ask of this one.
struct ServiceRequests
{
    std::function<void()> activate;
    std::function<void(const QList<Address> &)> open;
    std::function<void(const QString &action)> perform;
    /// Files, else text; whether there was anything to add.
    std::function<bool(const QList<Address> &, const QString &text)> addToShelf;
};

/// The object that the program's interfaces are served from. Requests that come
/// before anybody answers them wait in their order; those to come up count once.
class ApplicationService final : public QDBusVirtualObject
{
public:
    void deliverTo(ServiceRequests requests);

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &bus) override;

private:
    void whenReady(std::function<void()> request);

    std::optional<ServiceRequests> m_requests;
    std::vector<std::function<void()>> m_waiting;
    bool m_activationWaits = false;
};
