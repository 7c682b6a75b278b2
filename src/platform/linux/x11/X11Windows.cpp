#include "platform/linux/x11/X11Windows.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

void X11Windows::bringToFront(QWidget &window)
{
    auto &activation = m_activations[&window];
    if (!activation) { // Before the window is mapped.
        auto *connection = Xcb::toolkitConnection();
        const auto root = X11Root::of(connection, static_cast<xcb_window_t>(window.winId()));
        activation = std::make_shared<X11Activation>(window, connection, root, m_queue);
        QObject::connect(&window, &QObject::destroyed, &m_context,
                         [this, key = &window] { m_activations.remove(key); });
    }
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    activation->request();
}
