#include "platform/linux/SingleInstance.h"

#include "platform/linux/ApplicationService.h"
#include "platform/linux/ArgumentUrls.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>

namespace {

using Result = SingleInstance::Result;

/// A message bus of the test's own, with one connection for each "process".
class Bus
{
public:
    Bus()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       { QStringLiteral("--session"), QStringLiteral("--nofork"),
                         QStringLiteral("--print-address") });
        if (m_daemon.waitForReadyRead(5000))
            m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
    }
    ~Bus()
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

/// A connection that no bus is behind.
const QString noBus = QStringLiteral("none");

}

TEST(SingleInstanceTest, TheSecondStartAsksTheFirstToComeUp)
{
    const QTemporaryDir state;
    Bus bus;
    SingleInstance first(state.path().toUtf8(), bus.connection("first"));
    ASSERT_EQ(first.acquire(), Result::First);
    const QString second = bus.connection("second");
    const auto start = [&] { return SingleInstance(state.path().toUtf8(), second).acquire(); };

    // Requests that come while the first is still starting are answered, kept and delivered once.
    EXPECT_EQ(elsewhere(start), Result::HandedOver);
    EXPECT_EQ(elsewhere(start), Result::HandedOver);
    int activated = 0;
    first.deliverTo(
        { .activate = [&] { ++activated; }, .open = {}, .perform = {}, .addToShelf = {} });
    EXPECT_EQ(activated, 1);
    EXPECT_EQ(elsewhere(start), Result::HandedOver);
    EXPECT_EQ(activated, 2);

    // A different state folder does not make a second one.
    const QTemporaryDir other;
    EXPECT_EQ(elsewhere([&] { return SingleInstance(other.path().toUtf8(), second).acquire(); }),
              Result::HandedOver);
    EXPECT_EQ(activated, 3);
}

TEST(SingleInstanceTest, RequestsThatComeTooEarlyAreAnsweredInTheirOrder)
{
    const QTemporaryDir state;
    Bus bus;
    SingleInstance first(state.path().toUtf8(), bus.connection("first"));
    ASSERT_EQ(first.acquire(), Result::First);
    const QString second = bus.connection("second");
    QDBusConnection client(second);
    const auto message = [](const char *interface, const char *method, const QVariantList &values) {
        auto call = QDBusMessage::createMethodCall(QStringLiteral("app.vantleapp.Vantle"),
                                                   QStringLiteral("/app/vantleapp/Vantle"),
                                                   QLatin1String(interface), QLatin1String(method));
        call.setArguments(values);
        return call;
    };
    constexpr char standard[] = "org.freedesktop.Application";
    constexpr char own[] = "app.vantleapp.Vantle";

    const QList<QUrl> given { QUrl(QStringLiteral("file:///n%E4me")),
                              QUrl(QStringLiteral("file:///b")) };
    EXPECT_EQ(
        elsewhere([&] { return SingleInstance(state.path().toUtf8(), second).acquire(given); }),
        Result::HandedOver);
    auto early
        = client.asyncCall(message(own, "AddToShelf", { QStringList(), QStringLiteral("a") }));
    client.send(message(standard, "ActivateAction",
                        { QStringLiteral("toggle"), QVariantList(), QVariantMap() }));
    QStringList log;
    const auto requests = [&log] {
        return ServiceRequests {
            .activate = [&log] { log += QStringLiteral("activate"); },
            .open =
                [&log](const QList<QUrl> &urls) {
                    for (const QUrl &url : urls)
                        log += QString::fromLatin1(url.toEncoded());
                },
            .perform = [&log](const QString &action) { log += action; },
            .addToShelf =
                [&log](const QList<QUrl> &urls, const QString &text) {
                    log += QString::number(urls.size()) + text;
                    return !text.isEmpty();
                },
        };
    };
    // The bus keeps the order: once this is answered, the others have arrived.
    elsewhere([&] { return client.call(message("org.freedesktop.DBus.Peer", "Ping", {})); });
    QCoreApplication::processEvents();
    EXPECT_FALSE(early.isFinished());
    first.deliverTo(requests());
    EXPECT_EQ(log,
              (QStringList { QStringLiteral("file:///n%E4me"), QStringLiteral("file:///b"),
                             QStringLiteral("0a"), QStringLiteral("toggle") }));
    elsewhere([&] { return early.waitForFinished(), true; });
    EXPECT_EQ(early.reply().arguments(), QVariantList { true });

    // Hostile arguments: nothing of them arrives, and the caller learns of the rest.
    struct Case
    {
        const char *interface, *method;
        QVariantList arguments;
        const char *answer; // The signature of what comes back, or the error.
        QString logged;
    };
    constexpr char unknown[] = "org.freedesktop.DBus.Error.UnknownMethod";
    const QStringList odd { QString(), QStringLiteral("file://elsewhere/a"), QStringLiteral("::"),
                            QStringLiteral("file:///a%00b"), QString(100000, u'/') };
    const Case cases[] = {
        { own, "AddToShelf", { odd, QString() }, "b", QStringLiteral("0") },
        { own, "AddToShelf", { QStringLiteral("a"), QString() }, unknown, {} },
        { standard, "Open", { odd, QVariantMap() }, "", {} },
        { standard, "Open", { odd }, unknown, {} },
        { standard, "Close", {}, unknown, {} },
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.method);
        log.clear();
        const auto reply = elsewhere([&] {
            return client.call(message(c.interface, c.method, c.arguments), QDBus::Block, 2000);
        });
        const QString answer
            = reply.type() == QDBusMessage::ErrorMessage ? reply.errorName() : reply.signature();
        EXPECT_EQ(answer.toStdString(), c.answer);
        EXPECT_EQ(log.join(u' '), c.logged);
    }
}

TEST(ArgumentUrlsTest, PathsAndAddressesAreTold)
{
    struct Case
    {
        const char *what;
        QByteArrayList arguments;
        QByteArrayList urls;
    };
    const Case cases[] = {
        { "paths",
          { "a", "/b/../c", "n\xE4me" },
          { "file:///d/a", "file:///c", "file:///d/n%E4me" } },
        { "addresses",
          { "file:///a%20b", "https://x.org/" },
          { "file:///a%20b", "https://x.org/" } },
        { "options", { "-x", "--gapplication-service", "", "--", "-x" }, { "file:///d/-x" } },
        { "a colon in a name", { "a:b" }, { "file:///d/a:b" } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        QByteArrayList urls;
        for (const QUrl &url : argumentUrls(c.arguments, "/d"))
            urls.append(url.toEncoded());
        EXPECT_EQ(urls, c.urls);
    }
}

TEST(SingleInstanceTest, WithoutABusTheLockDecidesAndGoesWithItsProcess)
{
    const QTemporaryDir state;
    // Another process takes the lock and dies without tidying up.
    std::array<int, 2> pipe {};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        SingleInstance holder(state.path().toUtf8(), noBus);
        const char held = holder.acquire() == Result::First ? 'y' : 'n';
        if (::write(pipe[1], &held, 1) == 1)
            ::pause();
        ::_exit(0);
    }
    char held = 0;
    ASSERT_EQ(::read(pipe[0], &held, 1), 1);
    ::close(pipe[0]);
    ::close(pipe[1]);
    EXPECT_EQ(held, 'y');

    testing::internal::CaptureStderr();
    EXPECT_EQ(SingleInstance(state.path().toUtf8(), noBus).acquire(), Result::HeldElsewhere);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("another session"), std::string::npos);

    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(SingleInstance(state.path().toUtf8(), noBus).acquire(), Result::First);
}

TEST(SingleInstanceTest, AHolderThatEndsMeanwhileIsSucceeded)
{
    Bus bus;
    // One without a bus, and one that takes the request but ends before it answers.
    for (const QString &its : { noBus, bus.connection("first") }) {
        SCOPED_TRACE(qPrintable(its));
        const QTemporaryDir state;
        auto holder = std::make_unique<SingleInstance>(state.path().toUtf8(), its);
        ASSERT_EQ(holder->acquire(), Result::First);
        const QString other = its == noBus ? noBus : bus.connection("second");
        auto result = Result::HeldElsewhere;
        std::thread starting(
            [&] { result = SingleInstance(state.path().toUtf8(), other).acquire(); });
        ::usleep(60000);
        QDBusConnection::disconnectFromBus(its);
        holder.reset();
        starting.join();
        EXPECT_EQ(result, Result::First);
    }
}

TEST(SingleInstanceTest, WhereNoLockCanBeHadTheNameAloneDecides)
{
    Bus bus;
    const QByteArray nowhere = "/proc/nowhere";
    SingleInstance first(nowhere, bus.connection("first"));
    EXPECT_EQ(first.acquire(), Result::First);
    const QString second = bus.connection("second");
    EXPECT_EQ(elsewhere([&] { return SingleInstance(nowhere, second).acquire(); }),
              Result::HandedOver);
    EXPECT_EQ(SingleInstance(nowhere, noBus).acquire(), Result::First);
}
