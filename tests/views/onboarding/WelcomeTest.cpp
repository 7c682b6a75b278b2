#include "views/ViewWorld.h"

#include "views/onboarding/DemoDragView.h"
#include "views/onboarding/WelcomeFooter.h"
#include "views/onboarding/WelcomeView.h"

#include <QLabel>

#include <gtest/gtest.h>

namespace {

/// The tour over a store; every text shows as its key.
class Tour
{
public:
    explicit Tour(ViewWorld &world)
        : view(world.settings, world.store(), world.texts, world.store().makeDemoFile(),
               WelcomeDesktop { world.world.queue, world.session, world.icons,
                                ViewWorld::resources() })
    {
        view.onDemoBegin = [this] { calls += u"begin "; };
        view.onDemoEnd = [this] { calls += u"end "; };
        view.onDemoPut = [this] { calls += u"put "; };
        view.onDone = [this] { calls += u"done "; };
        view.setMotion(Motion::Reduced);
        view.resize(view.sizeHint());
        view.show();
        QApplication::processEvents();
    }

    template<typename Widget>
    Widget *one()
    {
        for (auto *each : view.findChildren<QWidget *>()) {
            if (auto *found = dynamic_cast<Widget *>(each))
                return found;
        }
        return nullptr;
    }
    WelcomeFooter &footer() { return *one<WelcomeFooter>(); }
    DemoDragView *sample() { return one<DemoDragView>(); }
    /// Whether a label that can be seen says that.
    bool says(const QString &text)
    {
        const auto labels = view.findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) {
            return label->isVisible() && label->text() == text;
        });
    }

    QString calls;
    WelcomeView view;
};

}

TEST(WelcomeTest, ButtonsDotsAndKeysTurnThePagesAndEndTheTourAtItsEnds)
{
    using Act = std::function<void(Tour &)>;
    const auto key = [](Qt::Key pressed) -> Act {
        return [pressed](Tour &tour) { QTest::keyClick(&tour.view, pressed); };
    };
    const struct
    {
        const char *what;
        int from;
        Act act;
        int to;
        const char *calls = "";
    } cases[] = {
        { "left on the first ends", 0, [](Tour &t) { t.footer().left().click(); }, 0, "done " },
        { "left goes back", 3, [](Tour &t) { t.footer().left().click(); }, 2 },
        { "right goes on", 3, [](Tour &t) { t.footer().right().click(); }, 4 },
        { "a dot", 0, [](Tour &t) { t.footer().dot(3).click(); }, 3 },
        { "the page's own dot", 2, [](Tour &t) { t.footer().dot(2).click(); }, 2 },
        { "after the last", 4, [](Tour &t) { t.view.go(5); }, 4 },
        { "arrow right", 1, key(Qt::Key_Right), 2 },
        { "arrow left on the first", 0, key(Qt::Key_Left), 0 },
        { "return", 4, key(Qt::Key_Return), 4, "done " },
    };
    ViewWorld world;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Tour tour(world);
        tour.view.go(c.from);
        c.act(tour);
        EXPECT_EQ(tour.view.page(), c.to);
        EXPECT_EQ(tour.calls, QLatin1String(c.calls));
        for (int page = 0; page < 5; ++page) {
            EXPECT_EQ(tour.footer().dot(page).isChecked(), page == c.to);
            EXPECT_EQ(tour.says(u"wel_p%1_title"_s.arg(page + 1)), page == c.to);
        }
        if (c.from != c.to) {
            EXPECT_EQ(tour.view.isForward(), c.to > c.from);
        }
    }
    Tour tour(world); // Where the language runs the other way.
    tour.view.setLayoutDirection(Qt::RightToLeft);
    QTest::keyClick(&tour.view, Qt::Key_Left);
    EXPECT_EQ(tour.view.page(), 1);
}

TEST(WelcomeTest, TheSampleIsDraggedFromThreePointsOnAndTellsItsEnd)
{
    const struct
    {
        const char *what;
        QPoint moved;
        bool drags;
        QPoint from {}; // From the middle, in hundredths of the ring's radius.
    } cases[] = {
        { "less than three points", { 2, 2 }, false },
        { "three points", { 0, 3 }, true },
        { "from the ring's side", { 9, 0 }, true, { -95, 0 } },
        { "from the ring's foot", { 9, 0 }, true, { 0, 95 } },
        { "from beside the ring", { 9, 0 }, false, { 90, 90 } },
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        ViewWorld world;
        Tour tour(world);
        tour.view.go(4);
        auto *sample = tour.sample();
        const QPoint at = sample->rect().center() + c.from * sample->width() / 200;
        QTest::mousePress(sample, Qt::LeftButton, {}, at);
        QTest::mouseMove(sample, at + c.moved);
        QTest::mouseRelease(sample, Qt::LeftButton, {}, at + c.moved);
        ASSERT_EQ(world.session.begun.size(), c.drags ? 1U : 0U);
        EXPECT_EQ(tour.calls, QLatin1String(c.drags ? "begin " : ""));
        if (!c.drags)
            continue;
        const auto &begun = world.session.begun[0];
        EXPECT_EQ(begun.items.at(0).url, world.store().makeDemoFile());
        EXPECT_TRUE(tour.says(u"try_hint_drop"_s));
        begun.onEnd(false);
        EXPECT_EQ(tour.calls, u"begin end ");
        EXPECT_TRUE(tour.says(u"try_hint_drag"_s));
    }
}

TEST(WelcomeTest, TheLastPageTellsWhetherTheSampleIsOnTheShelf)
{
    ViewWorld world;
    const QUrl demo = world.store().makeDemoFile();
    {
        Tour tour(world);
        tour.view.go(4);
        QTest::keyClick(tour.sample(), Qt::Key_Space);
        EXPECT_EQ(tour.calls, u"put ");
        EXPECT_TRUE(tour.says(u"try_hint_drag"_s));
        world.store().add({ demo });
        EXPECT_TRUE(tour.says(u"try_done"_s));
    }
    Tour again(world);
    again.view.go(4);
    EXPECT_TRUE(again.says(u"try_done"_s));
    world.store().removeUrls({ demo });
    EXPECT_TRUE(again.says(u"try_hint_drag"_s));
}
