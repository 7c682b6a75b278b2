#include "views/look/PopupWatch.h"

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
    QWidget menu(nullptr, Qt::Popup);
    QWidget submenu(nullptr, Qt::Popup);
    QWidget window;
    QWidget tip(nullptr, Qt::ToolTip);
    // Shown by hand: a real popup grabs the keyboard, which needs a display.
    const auto after
        = [&](std::initializer_list<QWidget *> shown, std::initializer_list<QWidget *> hidden) {
              for (auto *widget : shown)
                  QApplication::sendEvent(widget, std::make_unique<QShowEvent>().get());
              for (auto *widget : hidden)
                  QApplication::sendEvent(widget, std::make_unique<QHideEvent>().get());
              return told;
          };
    EXPECT_EQ(after({ &window, &tip }, { &menu }), "") << "It was never open.";
    EXPECT_EQ(after({ &menu, &submenu }, { &submenu }), "o");
    EXPECT_EQ(after({ &submenu }, { &menu, &window }), "o");
    EXPECT_EQ(after({}, { &submenu }), "oc");
    EXPECT_EQ(after({ &menu }, {}), "oco");
}
