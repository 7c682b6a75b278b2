#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusContext>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <vector>

/// What other programs may ask of this one.
struct ServiceRequests
{
    std::function<void()> activate;
    std::function<void(const QList<QUrl> &)> open;
    std::function<void(const QString &action)> perform;
    /// Files, else text; whether there was anything to add.
    std::function<bool(const QList<QUrl> &, const QString &text)> addToShelf;
};

/// The object that the program's interfaces are served from. Requests that come
/// before anybody answers them wait in their order; those to come up count once.
class ApplicationService final : public QObject, protected QDBusContext
{
    Q_OBJECT
public:
    ApplicationService();
    void deliverTo(ServiceRequests requests);

    void activate();
    void open(const QStringList &uris);
    void perform(const QString &action);
    /// While it must wait, the caller gets the answer later, and this one is void.
    bool addToShelf(const QStringList &uris, const QString &text);

private:
    void whenReady(std::function<void()> request);

    std::optional<ServiceRequests> m_requests;
    std::vector<std::function<void()>> m_waiting;
    bool m_activationWaits = false;
};

// What the bus sees of it. Arguments of other types are answered by the bus
// library: there is no such method.
// NOLINTBEGIN(readability-identifier-naming): the methods' names are those on the bus.

class ApplicationAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationAdaptor(ApplicationService &service);

public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers): these are slots.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    void ActivateAction(const QString &name, const QVariantList &parameter,
                        const QVariantMap &platformData);

private:
    ApplicationService &m_service;
};

class ShelfAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.vantleapp.Vantle")
    Q_CLASSINFO("D-Bus Introspection",
                "<interface name=\"app.vantleapp.Vantle\">\n"
                "  <method name=\"AddToShelf\">\n"
                "    <arg name=\"uris\" type=\"as\" direction=\"in\"/>\n"
                "    <arg name=\"text\" type=\"s\" direction=\"in\"/>\n"
                "    <arg name=\"added\" type=\"b\" direction=\"out\"/>\n"
                "  </method>\n"
                "</interface>\n")
public:
    explicit ShelfAdaptor(ApplicationService &service);

public Q_SLOTS: // NOLINT(readability-redundant-access-specifiers): these are slots.
    bool AddToShelf(const QStringList &uris, const QString &text);

private:
    ApplicationService &m_service;
};

// NOLINTEND(readability-identifier-naming)
