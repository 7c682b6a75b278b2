#include "platform/linux/session/SingleInstance.h"

#include "base/NativeFile.h"
#include "platform/linux/session/ApplicationService.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QVariantMap>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>
#include <utility>

namespace {

const QString busName = QStringLiteral("app.vantleapp.Vantle");
const QString objectPath = QStringLiteral("/app/vantleapp/Vantle");

constexpr int callLimit = 2000; // Milliseconds.
constexpr int startLimit = 2000; // Milliseconds between a starting process's lock and its name.
constexpr int endLimit = 200; // Milliseconds in which a process that is ending lets go of its lock.
constexpr std::chrono::milliseconds retryPause(50);

QDBusConnection busNamed(const QString &connection)
{
    return connection.isEmpty() ? QDBusConnection::sessionBus() : QDBusConnection(connection);
}

}

SingleInstance::SingleInstance(const QByteArray &stateFolder, QString connection)
    : m_folder(stateFolder + "/Vantle")
    , m_connection(std::move(connection))
{
}

SingleInstance::~SingleInstance()
{
    if (m_service)
        busNamed(m_connection).unregisterObject(objectPath);
}

SingleInstance::Result SingleInstance::acquire(const QList<Address> &files)
{
    const bool canAsk = busNamed(m_connection).isConnected();
    const QDeadlineTimer deadline(canAsk ? startLimit : endLimit);
    for (;;) {
        const bool held = isHeldByOthers();
        // The name decides where there is no lock, as in a home folder that is read-only.
        // Without a bus nobody can be asked, and the lock alone has decided.
        if (!held && (!canAsk || serve()))
            return Result::First;
        const HandOver last = handOver(files);
        if (last == HandOver::Done)
            return Result::HandedOver;
        if (!held && last == HandOver::NobodyThere)
            return Result::First; // The bus refused the name, but nobody else has it.
        if (!held || deadline.hasExpired()) {
            const bool hangs = last == HandOver::NoAnswer;
            std::fputs(hangs ? "Vantle is already running, but does not answer.\n"
                             : "Vantle is already running in another session of this user.\n",
                       stderr);
            return hangs ? Result::NoAnswer : Result::HeldElsewhere;
        }
        // The holder of the lock has no name yet, or is just ending. One that hangs
        // has used up the time with its first answer that did not come.
        std::this_thread::sleep_for(retryPause);
    }
}

void SingleInstance::deliverTo(ServiceRequests requests)
{
    if (m_service)
        m_service->deliverTo(std::move(requests));
}

/// Takes the lock where it can be had.
bool SingleInstance::isHeldByOthers()
{
    if (!m_lock && NativeFile::makeFolder(m_folder)) {
        const QByteArray path = m_folder + "/lock";
        m_lock
            = Descriptor(::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    }
    return m_lock && ::flock(m_lock.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

/// Takes the name; the object is there before it, so that no request is lost.
bool SingleInstance::serve()
{
    QDBusConnection bus = busNamed(m_connection);
    m_service = std::make_unique<ApplicationService>();
    bus.registerVirtualObject(objectPath, m_service.get());
    bus.interface()->setTimeout(callLimit);
    const auto reply
        = bus.interface()->registerService(busName, QDBusConnectionInterface::DontQueueService,
                                           QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered)
        return true;
    bus.unregisterObject(objectPath);
    m_service.reset();
    return false;
}

SingleInstance::HandOver SingleInstance::handOver(const QList<Address> &files) const
{
    const QDBusConnection bus = busNamed(m_connection);
    if (!bus.isConnected())
        return HandOver::NobodyThere;
    auto message = QDBusMessage::createMethodCall(
        busName, objectPath, QStringLiteral("org.freedesktop.Application"),
        files.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
    // The bus must not start yet another process.
    message.setAutoStartService(false);
    QStringList uris;
    for (const Address &file : files)
        uris.append(QString::fromUtf8(file.text));
    if (!uris.isEmpty())
        message << uris;
    message << QVariantMap();
    const QDBusMessage reply = bus.call(message, QDBus::Block, callLimit);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return HandOver::Done;
    const QString error = reply.errorName();
    const bool nobody = error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown")
        || error == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
    return nobody ? HandOver::NobodyThere : HandOver::NoAnswer;
}
