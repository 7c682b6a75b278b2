#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QProcess>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

/// A message bus of the test's own, with one connection for each "process".
class PrivateBus
{
public:
    PrivateBus()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       { QStringLiteral("--session"), QStringLiteral("--nofork"),
                         QStringLiteral("--print-address") });
        if (m_daemon.waitForReadyRead(5000))
            m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
    }
    ~PrivateBus()
    {
        for (const auto &name : m_names)
            QDBusConnection::disconnectFromBus(name);
        m_daemon.terminate();
        m_daemon.waitForFinished(5000);
    }
    QString connection(const char *name)
    {
        m_names.append(QLatin1String(name));
        EXPECT_TRUE(QDBusConnection::connectToBus(m_address, m_names.last()).isConnected());
        return m_names.last();
    }

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_names;
};

/// Runs on a thread, as another process would, while this one answers its events.
template<typename Work>
auto elsewhere(Work work)
{
    std::atomic<bool> done = false;
    decltype(work()) result {};
    std::thread thread([&] {
        result = work();
        done = true;
    });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    thread.join();
    return result;
}
