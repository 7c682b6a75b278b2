#include "app/ApplicationWorld.h"
#include "app/Feedback.h"

#include "views/AboutView.h"
#include "views/onboarding/WelcomeView.h"

#include <QApplication>
#include <QLabel>

#include <gtest/gtest.h>

namespace {

QList<WelcomeView *> tours()
{
    QList<WelcomeView *> found;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *tour = dynamic_cast<WelcomeView *>(widget); tour && tour->isVisible())
            found.append(tour);
    }
    return found;
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

TEST(WelcomeStartTest, AnOpenTourKeepsItsPageAndAClosedOneBeginsAnew)
{
    Application app;
    app.delegate.showWelcome();
    ASSERT_EQ(tours().size(), 1);
    tours()[0]->go(3);
    app.delegate.showWelcome();
    ASSERT_EQ(tours().size(), 1);
    EXPECT_EQ(tours()[0]->page(), 3);
    EXPECT_FALSE(app.window.visible);
    tours()[0]->onDone();
    app.queue.advance(1);
    EXPECT_EQ(tours().size(), 0);
    EXPECT_TRUE(app.isUp());
    app.delegate.showWelcome();
    ASSERT_EQ(tours().size(), 1);
    EXPECT_EQ(tours()[0]->page(), 0);
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
    struct Case
    {
        const char *site, *code, *address;
    };
    const Case cases[] = {
        { "https://a.test/", "en", "https://a.test/?app=1.2%20(3)#feedback" },
        { "https://a.test/", "pt", "https://a.test/?app=1.2%20(3)#feedback" },
        { "https://a.test/", "de", "https://a.test/de/?app=1.2%20(3)#feedback" },
        { "https://a.test/x/", "zh-Hans", "https://a.test/x/zh-hans/?app=1.2%20(3)#feedback" },
        { "https://a.test/", "zh-Hant", "https://a.test/zh-hant/?app=1.2%20(3)#feedback" },
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

TEST(WelcomeStartTest, TheStatusMenuHasItsEntriesInOrderAndOneAboutWindow)
{
    Application app;
    QStringList titles;
    for (const MenuEntry &entry : app.status.entries)
        titles.append(entry.title);
    EXPECT_EQ(titles.mid(1),
              QStringList({ {},
                            QStringLiteral("Welcome Tour"),
                            QStringLiteral("About Vantle"),
                            QStringLiteral("Send Feedback"),
                            QStringLiteral("Settings…"),
                            {},
                            QStringLiteral("Quit Vantle") }));
    for (int i = 0; i < 2; ++i)
        app.status.entries[3].action();
    QStringList lines;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (!dynamic_cast<AboutView *>(widget))
            continue;
        EXPECT_EQ(widget->windowTitle(), QStringLiteral("About Vantle"));
        for (const auto *line : widget->findChildren<QLabel *>())
            lines.append(line->text());
    }
    EXPECT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines.contains(QStringLiteral("Vantle")));
    EXPECT_TRUE(lines.contains(QStringLiteral("A shelf for whatever you drag")));
}
