#pragma once

#include "base/Descriptor.h"
#include "platform/Address.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <memory>

class ApplicationService;
struct ServiceRequests;

/// One process a user: a lock in the state folder, and behind it the name
/// app.vantleapp.Vantle on the session bus, over which a second start asks the
/// first to come up, and gives it the files that it was started with. The lock goes with the
/// process, however it ends. Main thread; needs a QCoreApplication.
class SingleInstance
{
public:
    enum class Result {
        First, // Go on.
        HandedOver, // Another process comes up instead: end, with success.
        HeldElsewhere, // Another session of the user runs it; standard error says so.
        NoAnswer, // Another process runs and does not answer; standard error says so.
    };

    /// `stateFolder` is XDG_STATE_HOME; `connection` names a bus connection that is
    /// not the session's.
    explicit SingleInstance(const QByteArray &stateFolder, QString connection = {});
    ~SingleInstance();

    /// To be called before anything else touches a file. Waits for the bus and
    /// for a first process that is just starting, 2 seconds at most for each.
    Result acquire(const QList<Address> &files = {});

    /// Sets who answers requests of other programs, those that came earlier included.
    void deliverTo(ServiceRequests requests);

private:
    enum class HandOver { Done, NobodyThere, NoAnswer };

    bool isHeldByOthers();
    bool serve();
    HandOver handOver(const QList<Address> &files) const;

    QByteArray m_folder;
    QString m_connection;
    Descriptor m_lock;
    std::unique_ptr<ApplicationService> m_service;
};
