#pragma once

#include "platform/KeyEvent.h"

#include <QObject>

#include <functional>

class QWidget;

/// Decides who gets a key in a window of ours. A text field that has the
/// keyboard keeps all of them, so that its own editing keys work and Return in it
/// opens nothing; a focused button keeps those that press it and those that leave
/// it; everything else is a command, before the widgets see it.
class KeyRouter final : public QObject
{
public:
    /// The window has its native handle.
    explicit KeyRouter(QWidget &window);

    std::function<bool(const KeyEvent &)> onKey; // True means consumed.

private:
    bool eventFilter(QObject *object, QEvent *event) override;

    QWidget &m_window;
};
