#include "views/ViewWorld.h"
#include "views/list/ItemRowDelegate.h"

#include <QMouseEvent>
#include <QScrollBar>

TEST(ListMouseTest, ReleaseSelectsAndModifiersExtend)
{
    ViewWorld w(5);
    w.press(w.row(1));
    EXPECT_EQ(w.store().pressedID, w.item(1).id);
    EXPECT_EQ(w.selectedRows(), QList<int>());
    w.release(w.row(1));
    EXPECT_EQ(w.selectedRows(), QList<int>({ 1 }));
    w.click(w.row(3), Qt::ControlModifier);
    EXPECT_EQ(w.selectedRows(), QList<int>({ 1, 3 }));
    w.click(w.row(4), Qt::ShiftModifier);
    EXPECT_EQ(w.selectedRows(), QList<int>({ 3, 4 }));
    w.click(w.row(3), Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(w.selectedRows(), QList<int>({ 4 }));
    w.click(w.row(0), Qt::AltModifier | Qt::MetaModifier);
    EXPECT_EQ(w.selectedRows(), QList<int>({ 0 }));
}

TEST(ListMouseTest, APressThatMovedOrEndedElsewhereIsNoClick)
{
    ViewWorld w(3);
    w.view->onMoveWindow = [] { FAIL() << "A press on a row never moves the panel."; };
    for (const auto &[offset, clicks] :
         { std::pair(QPoint(2, 0), true), { QPoint(3, 0), false }, { QPoint(0, 49), false } }) {
        w.store().deselectAll();
        w.press(w.row(0));
        w.move(w.row(0) + offset);
        w.release(w.row(0) + offset);
        EXPECT_EQ(w.selectedRows(), clicks ? QList<int>({ 0 }) : QList<int>());
    }
    w.press(w.row(0)); // Its moves became a drag and did not come here.
    w.view->cancelPress();
    w.release(w.row(0));
    EXPECT_EQ(w.selectedRows(), QList<int>());
}

TEST(ListMouseTest, TheBackgroundDeselectsByClickAndMovesThePanelByDrag)
{
    ViewWorld w(2);
    int moves = 0;
    w.view->onMoveWindow = [&] { ++moves; };
    const QPoint header(110, 15); // Between title and handle.
    const QPoint between(100, w.rowRect(0).bottom() + 3);
    w.click(w.row(0));
    w.click(header);
    EXPECT_EQ(w.selectedRows(), QList<int>({ 0 })) << "The header is not the list.";
    w.click(between);
    EXPECT_EQ(w.selectedRows(), QList<int>());
    EXPECT_EQ(moves, 0);

    w.click(w.row(0));
    int expected = 0;
    for (const QPoint &from : { header, between, w.belowRows() }) {
        w.press(from);
        EXPECT_EQ(w.store().pressedID, w.item(0).id) << "Only rows report themselves.";
        w.move(from + QPoint(2, 0));
        EXPECT_EQ(moves, expected);
        w.move(from + QPoint(3, 0));
        w.move(from + QPoint(30, 10));
        EXPECT_EQ(moves, ++expected) << "Once for each press.";
        w.release(from + QPoint(30, 10));
    }
    EXPECT_EQ(w.selectedRows(), QList<int>({ 0 }));

    QTest::mouseClick(w.window(), Qt::MiddleButton, {}, w.button(0));
    w.settle();
    EXPECT_EQ(w.store().items.value().size(), 2);
}

TEST(ListMouseTest, TheRemoveButtonActsOnItsRowAlone)
{
    ViewWorld w(4);
    w.store().selectAll();
    const auto second = w.item(1);
    w.press(w.button(1));
    EXPECT_FALSE(w.store().pressedID) << "A button must not start a drag of the row.";
    w.move(w.row(1));
    w.release(w.row(1));
    EXPECT_EQ(w.store().items.value().size(), 4) << "Let go beside it.";
    w.click(w.button(1));
    ASSERT_EQ(w.store().items.value().size(), 3);
    EXPECT_FALSE(w.store().items.value().contains(second));
    EXPECT_EQ(w.selectedRows(), QList<int>({ 0, 1, 2 }));
    int activated = 0;
    w.view->actions.preview = [&] { ++activated; };
    w.doubleClick(w.button(0));
    EXPECT_EQ(w.store().items.value().size(), 1) << "Quick presses each remove one.";
    EXPECT_EQ(activated, 0);
}

TEST(ListMouseTest, ADoubleClickThatFallsOnTwoRowsIsTwoClicks)
{
    ViewWorld w(3);
    int activated = 0;
    w.view->actions.preview = [&] { ++activated; };
    const QPoint at = w.row(0);
    w.press(at);
    w.release(at);
    w.store().removeIds({ w.item(0).id }); // Another row comes under the pointer.
    w.settle();
    const QPointF inList = w.list().viewport()->mapFrom(w.view.get(), at);
    for (const auto type : { QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease }) {
        QMouseEvent event(type, inList, at, Qt::LeftButton, {}, {});
        QApplication::sendEvent(w.list().viewport(), &event);
    }
    EXPECT_EQ(activated, 0);
    EXPECT_EQ(w.selectedRows(), QList<int>({ 0 }));
}

TEST(ListMouseTest, KeysAreLeftToThePanelUnlessAButtonHasThem)
{
    ViewWorld w(3);
    int closes = 0;
    w.view->onClose = [&] { ++closes; };
    QTest::keyClick(w.window(), Qt::Key_Tab);
    w.click(w.row(1)); // Takes the keyboard back from the button.
    QTest::keyClick(w.window(), Qt::Key_Space);
    w.settle();
    EXPECT_EQ(w.store().items.value().size(), 3);

    QTest::keyClick(w.window(), Qt::Key_Tab);
    QTest::keyClick(w.window(), Qt::Key_Tab);
    QTest::keyClick(w.window(), Qt::Key_Space); // The button behind the title clears.
    w.settle();
    EXPECT_EQ(w.store().items.value().size(), 0);
    QTest::keyClick(w.window(), Qt::Key_Space); // It went: its neighbour must not get this.
    EXPECT_EQ(closes, 0);
}

TEST(ListMouseTest, FocusBringsItsRowIntoView)
{
    ViewWorld w(40, Motion::Full);
    auto *bar = w.list().verticalScrollBar();
    w.store().click(w.item(39).id, 0);
    w.world.queue.advance(0.07);
    EXPECT_GT(bar->value(), 0);
    EXPECT_LT(bar->value(), bar->maximum());
    w.world.queue.advance(0.1);
    EXPECT_EQ(bar->value(), bar->maximum());
    w.store().click(w.item(38).id, 0);
    w.world.queue.advance(0.2);
    EXPECT_EQ(bar->value(), bar->maximum()) << "What shows already does not move.";
    w.store().click(w.item(0).id, 0);
    w.world.queue.advance(0.2);
    EXPECT_EQ(bar->value(), 0);

    w.store().add({ w.world.file("landed") });
    w.world.queue.advance(0.5);
    EXPECT_EQ(bar->value(), bar->maximum()) << "So does a row that lands below.";
    w.store().removeIds({ w.item(0).id });
    w.world.queue.advance(0.5);
    bar->setValue(0);
    w.store().undoRemove();
    w.world.queue.advance(0.5);
    EXPECT_EQ(bar->value(), 0) << "One that comes back above stays there.";

    const auto files = w.world.files(39);
    w.store().newShelf();
    w.settle();
    w.store().add(files);
    w.settle();
    EXPECT_EQ(bar->value(), bar->maximum()) << "Also on a shelf that was empty.";
    w.store().newShelf();
    w.store().switchToIndex(1);
    w.settle();
    EXPECT_EQ(bar->value(), 0) << "Another shelf shows its head.";
}

TEST(ListMouseTest, ARowThatCutsItsNameTellsItWhole)
{
    ViewWorld w(1);
    const QString name = u"<b>"_s.repeated(60);
    auto items = w.store().items.value();
    items[0].preview = u"a"_s;
    items.append(World::item(QUrl(u"file:///f"_s)));
    items[1].preview = name;
    w.store().items.set(items);
    w.settle();
    w.list().grab(); // What was cut is known from painting.
    auto &rows = static_cast<ItemRowDelegate &>(*w.list().itemDelegate());
    EXPECT_TRUE(rows.shortened(w.item(1)).startsWith(name));
    EXPECT_EQ(rows.shortened(w.item(1)).count(u'\n'), 0) << "The folder's name shows whole.";
}
