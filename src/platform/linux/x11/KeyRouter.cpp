#include "platform/linux/x11/KeyRouter.h"

#include "platform/linux/x11/X11Keyboard.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWindow>

namespace {

bool isTextField(const QWidget *widget)
{
    return qobject_cast<const QLineEdit *>(widget) || qobject_cast<const QTextEdit *>(widget)
        || qobject_cast<const QPlainTextEdit *>(widget);
}

bool isReturn(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

bool isOfButton(const QKeyEvent &event)
{
    const bool leaves = event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
    const bool presses = event.key() == Qt::Key_Space || isReturn(event);
    return leaves || (presses && !event.modifiers().testFlag(Qt::ControlModifier));
}

}

KeyRouter::KeyRouter(QWidget &window)
    : m_window(window)
{
    window.windowHandle()->installEventFilter(this);
}

bool KeyRouter::eventFilter(QObject *, QEvent *event)
{
    // An open menu gets the keys of the window that it belongs to.
    if (event->type() != QEvent::KeyPress || QApplication::activePopupWidget())
        return false;
    const auto &key = static_cast<const QKeyEvent &>(*event);
    QWidget *focused = m_window.focusWidget();
    if (isTextField(focused))
        return false;
    auto *button = qobject_cast<QAbstractButton *>(focused);
    if (button && isOfButton(key)) {
        if (isReturn(key)) // The toolkit's buttons know space alone.
            button->click();
        return isReturn(key);
    }
    return onKey && onKey(X11Keyboard::keyEvent(key));
}
