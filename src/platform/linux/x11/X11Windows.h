#pragma once

#include "platform/linux/x11/X11Activation.h"

#include <QAbstractNativeEventFilter>
#include <QHash>

#include <memory>

/// Brings ordinary windows of ours to the front. The program mostly acts without
/// having been the active one, which is when window managers open windows behind.
class X11Windows final : public QAbstractNativeEventFilter
{
public:
    explicit X11Windows(MainQueue &queue);
    ~X11Windows() override;

    /// Shows a window, also one that is minimised, in front and with the keyboard.
    void bringToFront(QWidget &window);

    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

private:
    X11Activation &activationOf(QWidget &window);

    MainQueue &m_queue;
    QHash<const QObject *, std::shared_ptr<X11Activation>> m_activations;
    QHash<xcb_window_t, const QObject *> m_windows;
};
