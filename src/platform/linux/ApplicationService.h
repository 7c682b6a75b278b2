#pragma once

#include <QDBusAbstractAdaptor>
#include <QObject>
#include <QVariantMap>

#include <functional>

/// The object that org.freedesktop.Application is served from. Requests that
/// come before anybody answers them are kept, as one.
class ApplicationService final : public QObject
{
    Q_OBJECT
public:
    ApplicationService();
    void activate();
    void deliverTo(std::function<void()> onActivate);

private:
    std::function<void()> m_onActivate;
    bool m_pending = false;
};

/// What the bus sees of it. Opening files and actions are not served: the bus
/// library answers that there is no such method.
class ApplicationAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationAdaptor(ApplicationService &service);

public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers): these are slots.
    // NOLINTNEXTLINE(readability-identifier-naming): the interface's own name.
    void Activate(const QVariantMap &platformData);

private:
    ApplicationService &m_service;
};
