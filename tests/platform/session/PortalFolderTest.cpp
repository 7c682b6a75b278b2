#include "PrivateBus.h"

#include "platform/linux/session/PortalFolder.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>
#include <QWidget>

namespace {

const QString place = QStringLiteral("/org/freedesktop/portal/desktop");

/// Takes questions, and answers the last one when it is told to.
class Portal final : public QDBusVirtualObject
{
public:
    explicit Portal(QDBusConnection bus)
        : m_bus(std::move(bus))
    {
        m_bus.registerVirtualObject(place, this);
        EXPECT_TRUE(m_bus.registerService(name));
    }
    void vanish() { EXPECT_TRUE(m_bus.unregisterService(name)); }
    void respond(uint code)
    {
        auto signal = QDBusMessage::createSignal(
            m_path, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        m_bus.send(signal << code
                          << QVariantMap { { QStringLiteral("uris"),
                                             QStringList { QStringLiteral("file:///n%E4me") } } });
    }
    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &bus) override
    {
        if (call.member() != QStringLiteral("OpenFile"))
            return false;
        ++asked;
        const auto options = qdbus_cast<QVariantMap>(call.arguments().at(2));
        EXPECT_TRUE(options.value(QStringLiteral("directory")).toBool());
        m_path = place + QStringLiteral("/request/") + call.service().mid(1).replace(u'.', u'_')
            + u'/' + options.value(QStringLiteral("handle_token")).toString();
        return bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(m_path))));
    }

    int asked = 0;

private:
    const QString name = QStringLiteral("org.freedesktop.portal.Desktop");
    QDBusConnection m_bus;
    QString m_path;
};

}

TEST(PortalFolderTest, OnlyTheUsersOwnNoEndsAQuestionWithoutADialogOfOurs)
{
    PrivateBus bus;
    const QDBusConnection ours(bus.connection("ours"));
    Portal portal { QDBusConnection(bus.connection("portal")) };
    QWidget window;
    QString log;
    const auto waitFor = [](const auto &condition) {
        const QDeadlineTimer deadline(5000);
        while (!condition() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return condition();
    };
    const auto ask = [&] {
        PortalFolder::ask(
            ours, window, QStringLiteral("x11:1"), QStringLiteral("title"),
            [&](const QUrl &url) { log += QString::fromLatin1(url.toEncoded()); },
            [&] { log += QStringLiteral("ours"); });
    };
    const struct
    {
        std::function<void()> end;
        const char *log;
    } cases[] = { { [&] { portal.respond(0); }, "file:///n%E4me" },
                  { [&] { portal.respond(1); }, "" },
                  { [&] { portal.respond(2); }, "ours" },
                  { [&] { portal.vanish(); }, "ours" } };
    for (const auto &c : cases) {
        log.clear();
        portal.asked = 0;
        ask();
        ask();
        ASSERT_TRUE(waitFor([&] { return portal.asked > 0; }));
        c.end();
        EXPECT_TRUE(waitFor([&] { return window.children().isEmpty(); }));
        EXPECT_EQ(log.toStdString(), c.log);
        EXPECT_EQ(portal.asked, 1);
    }
    log.clear();
    ask(); // Nobody has the name any more.
    EXPECT_TRUE(waitFor([&] { return log == QStringLiteral("ours"); }));
}
