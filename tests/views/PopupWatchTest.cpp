#include "views/PopupWatch.h"

#include <QApplication>
#include <QHideEvent>
#include <QShowEvent>
#include <QWidget>

#include <gtest/gtest.h>

#include <string>

TEST(PopupWatchTest, TellsOfTheFirstPopupThatOpensAndTheLastThatCloses)
{
    PopupWatch watch;
    std::string told;
    watch.onOpened = [&] { told += 'o'; };
    watch.onClosed = [&] { told += 'c'; };
    // Shown by hand: a real popup grabs the keyboard, which needs a display.
    const auto send
        = [](QWidget &widget, QEvent &&event) { QApplication::sendEvent(&widget, &event); };
    const auto show = [&](QWidget &widget) { send(widget, QShowEvent()); };
    const auto hide = [&](QWidget &widget) { send(widget, QHideEvent()); };
    QWidget menu(nullptr, Qt::Popup);
    QWidget submenu(nullptr, Qt::Popup);
    QWidget window;
    QWidget tip(nullptr, Qt::ToolTip);
    show(window);
    show(tip);
    EXPECT_EQ(told, "");
    hide(menu); // Was never open.
    EXPECT_EQ(told, "");
    show(menu);
    show(submenu);
    hide(submenu);
    EXPECT_EQ(told, "o");
    show(submenu);
    hide(menu);
    hide(window);
    EXPECT_EQ(told, "o");
    hide(submenu);
    EXPECT_EQ(told, "oc");
    show(menu);
    EXPECT_EQ(told, "oco");
}
