#include "app/ApplicationWorld.h"
#include "app/Feedback.h"

#include "views/onboarding/WelcomeView.h"
#include "views/settings/AboutView.h"
#include "views/settings/SettingsView.h"

#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

namespace {

template<typename Window>
QList<Window *> shown()
{
    QList<Window *> found;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = dynamic_cast<Window *>(widget); window && window->isVisible())
            found.append(window);
    }
    return found;
}

QList<WelcomeView *> tours()
{
    return shown<WelcomeView>();
}

}

TEST(WelcomeStartTest, OnlyTheFirstStartShowsTheTourAndItsMarkIsStoredBefore)
{
    for (const bool onboarded : { false, true }) {
        SCOPED_TRACE(onboarded);
        Application app({ { QStringLiteral("onboarded"), onboarded } });
        EXPECT_EQ(tours().size(), onboarded ? 0 : 1);
        // A menu that starts programs over the bus asks for that at once.
        app.delegate.activate();
        app.queue.advance(1);
        EXPECT_EQ(app.isUp(), onboarded);
        EXPECT_TRUE(app.preferences.object.value(QStringLiteral("onboarded")).toBool());
    }
}

TEST(WelcomeStartTest, TheSampleThatIsPutOnTheShelfKeepsThePanelLikeADrop)
{
    Application app;
    app.delegate.showWelcome();
    tours()[0]->onDemoBegin();
    tours()[0]->onDemoEnd();
    app.queue.advance(1);
    EXPECT_FALSE(app.window.visible);
    tours()[0]->onDemoPut();
    app.queue.advance(1);
    EXPECT_TRUE(app.isUp());
}

TEST(WelcomeStartTest, FeedbackGoesToTheSiteInTheLanguageOfTheMoment)
{
    const struct
    {
        const char *site, *code, *address;
    } cases[] = {
        { "https://a.test/", "pt", "https://a.test/?app=1.2%20(3)#feedback" },
        { "https://a.test/", "de", "https://a.test/de/?app=1.2%20(3)#feedback" },
        { "https://a.test/x/", "zh-Hans", "https://a.test/x/zh-hans/?app=1.2%20(3)#feedback" },
        { "", "de", "" },
        { "not an address", "de", "" },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.address);
        const QUrl address = feedbackAddress(QLatin1String(c.site), QLatin1String(c.code),
                                             QStringLiteral("1.2 (3)"));
        EXPECT_EQ(address.toEncoded(), c.address);
    }
    Application app({ { QStringLiteral("language"), QStringLiteral("ja") } });
    app.status.entries[4].action();
    app.queue.settle();
    ASSERT_EQ(app.applications.opened.size(), 1);
    EXPECT_EQ(app.applications.opened[0].path(), QStringLiteral("/ja/"));
}

TEST(WelcomeStartTest, AboutAndSettingsOpenOnceAndEscapeClosesThem)
{
    Application app;
    for (const int entry : { 3, 5, 3, 5 }) // In the menu of the status item.
        app.status.entries[entry].action();
    QList<QWidget *> windows;
    for (AboutView *window : shown<AboutView>())
        windows.append(window);
    for (SettingsView *window : shown<SettingsView>())
        windows.append(window);
    EXPECT_EQ(windows.size(), 2);
    for (QWidget *window : windows) {
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
        QTest::keyClick(window, Qt::Key_Escape);
        EXPECT_FALSE(window->isVisible());
    }
}
