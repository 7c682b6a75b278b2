#pragma once

#include "platform/linux/x11/X11Activation.h"

#include <QHash>

#include <memory>

/// Brings ordinary windows of ours to the front. The program mostly acts without
/// having been the active one, which is when window managers open windows behind.
class X11Windows final
{
public:
    explicit X11Windows(MainQueue &queue)
        : m_queue(queue)
    {
    }

    /// Shows a window, also one that is minimised, in front and with the keyboard.
    void bringToFront(QWidget &window);

private:
    MainQueue &m_queue;
    QObject m_context; // Ends the connections to windows with us.
    QHash<const QObject *, std::shared_ptr<X11Activation>> m_activations;
};
