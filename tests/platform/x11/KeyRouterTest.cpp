#include "platform/linux/x11/KeyRouter.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QWindow>

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

namespace {

/// A window as the panel is one, with a text field and a button in it.
class Host
{
public:
    Host()
        : m_field(&m_window)
        , m_button(&m_window)
        , m_router((m_window.winId(), m_window))
    {
        m_router.onKey = [this](const KeyEvent &event) {
            commands.append(event.characters.isEmpty() ? QString::number(event.keyCode)
                                                       : event.characters);
            return true;
        };
        m_button.setAutoDefault(false);
        QObject::connect(&m_button, &QPushButton::clicked, [this] { ++clicks; });
        m_window.show();
        m_window.activateWindow();
        QCoreApplication::processEvents();
    }
    void focusField() { m_field.setFocus(); }
    void focusButton() { m_button.setFocus(); }
    void focusNone() { m_window.setFocus(); }
    QString text() const { return m_field.text(); }
    bool hasFieldFocus() const { return m_field.hasFocus(); }

    void press(Qt::Key key, int evdev, Qt::KeyboardModifiers modifiers = {},
               const QString &typed = {})
    {
        constexpr int x11Offset = 8;
        for (const auto type : { QEvent::KeyPress, QEvent::KeyRelease }) {
            QKeyEvent event(type, key, modifiers, static_cast<quint32>(evdev + x11Offset), 0, 0,
                            typed);
            QCoreApplication::sendEvent(m_window.windowHandle(), &event);
        }
    }

    QStringList commands;
    int clicks = 0;

private:
    QWidget m_window;
    QLineEdit m_field;
    QPushButton m_button;
    KeyRouter m_router;
};

}

TEST(KeyRouterTest, ATextFieldKeepsItsEditingKeys)
{
    Host host;
    host.focusField();
    host.press(Qt::Key_X, KEY_X, {}, QStringLiteral("x"));
    host.press(Qt::Key_Y, KEY_Y, {}, QStringLiteral("y"));
    EXPECT_EQ(host.text(), QStringLiteral("xy"));
    host.press(Qt::Key_A, KEY_A, Qt::ControlModifier);
    host.press(Qt::Key_X, KEY_X, Qt::ControlModifier);
    EXPECT_EQ(host.text(), QString());
    // Nor does it let go of what it has no use for.
    host.press(Qt::Key_Return, KEY_ENTER);
    host.press(Qt::Key_Down, KEY_DOWN);
    host.press(Qt::Key_T, KEY_T, Qt::ControlModifier);
    EXPECT_EQ(host.commands, QStringList());
}

TEST(KeyRouterTest, AButtonKeepsWhatPressesItAndWhatLeavesIt)
{
    Host host;
    host.focusButton();
    host.press(Qt::Key_Space, KEY_SPACE, {}, QStringLiteral(" "));
    host.press(Qt::Key_Return, KEY_ENTER);
    host.press(Qt::Key_Enter, KEY_KPENTER);
    EXPECT_EQ(host.clicks, 3);
    EXPECT_EQ(host.commands, QStringList());
    // The toolkit would move the focus with an arrow.
    host.press(Qt::Key_Down, KEY_DOWN);
    host.press(Qt::Key_Escape, KEY_ESC);
    host.press(Qt::Key_A, KEY_A, Qt::ControlModifier);
    EXPECT_EQ(host.commands.join(u' '), QStringLiteral("125 53 a"));
    host.press(Qt::Key_Tab, KEY_TAB);
    EXPECT_TRUE(host.hasFieldFocus());
}

TEST(KeyRouterTest, EverythingElseIsACommand)
{
    Host host;
    host.focusNone();
    host.press(Qt::Key_Return, KEY_ENTER);
    host.press(Qt::Key_Space, KEY_SPACE, {}, QStringLiteral(" "));
    host.press(Qt::Key_1, KEY_1, Qt::ControlModifier);
    EXPECT_EQ(host.commands,
              (QStringList { QStringLiteral("36"), QStringLiteral(" "), QStringLiteral("1") }));
    EXPECT_EQ(host.clicks, 0);
}
