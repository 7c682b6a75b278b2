#include "platform/linux/x11/X11Windows.h"

#include "platform/linux/x11/X11Root.h"
#include "platform/linux/x11/Xcb.h"

#include <QCoreApplication>

namespace {

/// Whose state the event tells about; none for events that activation does not need.
xcb_window_t subject(const xcb_generic_event_t &event)
{
    switch (event.response_type & 0x7f) {
    case XCB_MAP_NOTIFY:
        return reinterpret_cast<const xcb_map_notify_event_t &>(event).window;
    case XCB_UNMAP_NOTIFY:
        return reinterpret_cast<const xcb_unmap_notify_event_t &>(event).window;
    case XCB_PROPERTY_NOTIFY:
        return reinterpret_cast<const xcb_property_notify_event_t &>(event).window;
    default:
        return Xcb::none;
    }
}

}

X11Windows::X11Windows(MainQueue &queue)
    : m_queue(queue)
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11Windows::~X11Windows()
{
    if (auto *application = QCoreApplication::instance())
        application->removeNativeEventFilter(this);
}

void X11Windows::bringToFront(QWidget &window)
{
    X11Activation &activation = activationOf(window); // Before the window is mapped.
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    activation.request();
}

X11Activation &X11Windows::activationOf(QWidget &window)
{
    const auto native = static_cast<xcb_window_t>(window.winId());
    auto &activation = m_activations[&window];
    if (!activation) {
        auto *connection = Xcb::toolkitConnection();
        activation = std::make_shared<X11Activation>(window, connection,
                                                     X11Root::of(connection, native), m_queue);
        QObject::connect(&window, &QObject::destroyed, &window, [this, key = &window] {
            m_activations.remove(key);
            m_windows.removeIf([key](const auto &each) { return each.value() == key; });
        });
    }
    m_windows.insert(native, &window); // The toolkit may have made another one meanwhile.
    return *activation;
}

bool X11Windows::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto &event = *static_cast<const xcb_generic_event_t *>(message);
    const xcb_window_t window = m_windows.isEmpty() ? Xcb::none : subject(event);
    if (const auto activation = m_activations.value(m_windows.value(window)))
        activation->handleEvent(event);
    return false;
}
