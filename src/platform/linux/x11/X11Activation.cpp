#include "platform/linux/x11/X11Activation.h"

#include "platform/linux/x11/X11Root.h"

#include <QCoreApplication>

namespace {

constexpr quint32 pagerSource = 2; // Of _NET_ACTIVE_WINDOW: obeyed without focus-stealing checks.
constexpr double answerTime = 0.3; // Seconds that a window manager has for it.

}

X11Activation::X11Activation(QWidget &window, xcb_connection_t *connection, xcb_window_t root,
                             MainQueue &queue)
    : m_window(window)
    , m_connection(connection)
    , m_root(root)
    , m_queue(queue)
    , m_atoms(connection)
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

void X11Activation::bringToFront(QWidget &window, MainQueue &queue)
{
    auto *activation = window.findChild<X11Activation *>(QString(), Qt::FindDirectChildrenOnly);
    if (!activation) { // Before the window is mapped.
        auto *connection = Xcb::toolkitConnection();
        activation = new X11Activation(window, connection, X11Root::ofToolkit(connection), queue);
        activation->setParent(&window);
    }
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    activation->request();
}

void X11Activation::request()
{
    m_target = native();
    m_wanted = true;
    if (m_mapped)
        askTime();
}

void X11Activation::handOver(xcb_window_t other)
{
    cancel();
    m_target = other;
    m_wanted = true;
    askTime();
}

void X11Activation::cancel()
{
    m_wanted = false;
    m_fallback.reset();
}

bool X11Activation::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    switch (static_cast<const xcb_generic_event_t *>(message)->response_type & 0x7f) {
    case XCB_MAP_NOTIFY:
        if (static_cast<const xcb_map_notify_event_t *>(message)->window == native()) {
            m_mapped = true;
            if (m_wanted)
                askTime();
        }
        break;
    case XCB_UNMAP_NOTIFY:
        if (static_cast<const xcb_unmap_notify_event_t *>(message)->window == native())
            m_mapped = false;
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto &notify = *static_cast<const xcb_property_notify_event_t *>(message);
        if (m_wanted && notify.window == native() && notify.atom == m_atoms("_VANTLE_TIME"))
            activate(notify.time);
        break;
    }
    default:
        break;
    }
    return false;
}

void X11Activation::askTime()
{
    Xcb::askTime(m_connection, native(), m_atoms("_VANTLE_TIME"));
}

void X11Activation::activate(xcb_timestamp_t time)
{
    m_wanted = false;
    if (m_target == Xcb::none) {
        // Window managers do not leave the keyboard to the pointer.
        setFocus(XCB_INPUT_FOCUS_POINTER_ROOT, time);
        return;
    }
    X11Root::send(m_connection, m_root, m_target, m_atoms("_NET_ACTIVE_WINDOW"),
                  { pagerSource, time, 0 });
    // Where no window manager answers. One that gave the keyboard to somebody
    // else meanwhile is not overruled: the server ignores an older time.
    m_fallback = m_queue.after(answerTime, [this, time, target = m_target] {
        if (m_mapped && m_window.isActiveWindow() != (target == native()))
            setFocus(target, time);
    });
}

void X11Activation::setFocus(xcb_window_t to, xcb_timestamp_t time)
{
    Xcb::send(m_connection,
              xcb_set_input_focus_checked(m_connection, XCB_INPUT_FOCUS_PARENT, to, time));
}
