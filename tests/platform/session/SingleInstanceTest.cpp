#include "PrivateBus.h"

#include "platform/linux/session/SingleInstance.h"

#include "platform/linux/session/ApplicationService.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QTemporaryDir>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <thread>

namespace {

using Result = SingleInstance::Result;

/// A connection that no bus is behind.
const QString noBus = QStringLiteral("none");
constexpr char nowhere[] = "/proc/nowhere"; // No lock can be had there: the name alone decides.

}

TEST(SingleInstanceTest, AnotherStartAsksTheFirstAndRequestsThatComeTooEarlyWaitInTheirOrder)
{
    const QTemporaryDir state;
    PrivateBus bus;
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

    const auto start = [&](const QByteArray &folder, const QList<Address> &given) {
        EXPECT_EQ(elsewhere([&] { return SingleInstance(folder, second).acquire(given); }),
                  Result::HandedOver);
    };
    start(state.path().toUtf8(), {});
    start(nowhere, {});
    start(state.path().toUtf8(),
          { QUrl(QStringLiteral("file:///n%E4me")), Address({}, "https://B.org/") });
    auto early
        = client.asyncCall(message(own, "AddToShelf", { QStringList(), QStringLiteral("a") }));
    client.send(message(standard, "ActivateAction",
                        { QStringLiteral("toggle"), QVariantList(), QVariantMap() }));
    QStringList log;
    // The bus keeps the order: once this is answered, the others have arrived.
    elsewhere([&] { return client.call(message("org.freedesktop.DBus.Peer", "Ping", {})); });
    QCoreApplication::processEvents();
    EXPECT_FALSE(early.isFinished());
    first.deliverTo({
        .activate = [&] { log += QStringLiteral("activate"); },
        .open =
            [&](const QList<Address> &urls) {
                for (const Address &url : urls)
                    log += QString::fromUtf8(url.text);
            },
        .perform = [&](const QString &action) { log += action; },
        .addToShelf =
            [&](const QList<Address> &urls, const QString &text) {
                log += QString::number(urls.size()) + text;
                return !text.isEmpty();
            },
    });
    EXPECT_EQ(log.join(u' '), QStringLiteral("activate file:///n%E4me https://B.org/ 0a toggle"));
    elsewhere([&] { return early.waitForFinished(), true; });
    EXPECT_EQ(early.reply().arguments(), QVariantList { true });

    log.clear();
    start(state.path().toUtf8(), {});
    EXPECT_EQ(log.join(u' '), QStringLiteral("activate"));

    // Hostile arguments: nothing of them arrives, and the caller learns of the rest.
    constexpr char unknown[] = "org.freedesktop.DBus.Error.UnknownMethod";
    const QStringList odd { QString(), QStringLiteral("file://elsewhere/a"), QStringLiteral("::"),
                            QStringLiteral("file:///a%00b"), QString(100000, u'/') };
    const struct
    {
        const char *interface, *method;
        QVariantList arguments;
        const char *answer; // The signature of what comes back, or the error.
        QString logged;
    } cases[] = {
        { own, "AddToShelf", { odd, QString() }, "b", QStringLiteral("0") },
        { own, "AddToShelf", { QStringLiteral("a"), QString() }, unknown, {} },
        { standard, "Open", { odd, QVariantMap() }, "", {} },
        { standard, "Open", { odd }, unknown, {} },
        { standard, "Close", {}, unknown, {} },
    };
    for (const auto &c : cases) {
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
    PrivateBus bus;
    // One without a bus, and one that takes the request but ends before it answers.
    for (const QString &its : { noBus, bus.connection("first") }) {
        SCOPED_TRACE(qPrintable(its));
        EXPECT_EQ(SingleInstance(nowhere, its).acquire(), Result::First);
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
