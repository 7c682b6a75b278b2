#include "platform/linux/x11/X11Clipboard.h"

#include "base/MainQueue.h"

#include <QCoreApplication>

#include <utility>

namespace {

constexpr double readLimit = 10; // Seconds for everything that a paste reads.

}

X11Clipboard::X11Clipboard(MainQueue &queue, Workers &workers, QByteArray textFolder)
    : m_queue(queue)
    , m_textFolder(std::move(textFolder))
    , m_connection(Xcb::toolkitConnection())
    , m_atoms(m_connection)
    , m_offer(queue, workers, m_atoms)
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

void X11Clipboard::prepare()
{
    if (m_window != Xcb::none)
        return;
    m_window = Xcb::unseenWindow(m_connection);
}

X11Clipboard::~X11Clipboard()
{
    if (m_reading) {
        m_reading->giveUp();
        m_reading->waitForEnd(std::chrono::milliseconds(500));
    }
    if (m_window != Xcb::none)
        xcb_destroy_window(m_connection, m_window);
}

bool X11Clipboard::read(std::function<void(const ItemProviders &)> completion)
{
    prepare();
    const xcb_window_t owner = Xcb::selectionOwner(m_connection, m_atoms("CLIPBOARD"));
    if (owner == Xcb::none)
        return false;
    // A key that is held down asks an owner that hangs again and again.
    if (m_reading && owner == m_readFrom)
        return true;
    if (m_reading)
        m_reading->giveUp(); // Meanwhile something else was copied.
    m_readFrom = owner;
    m_reading = std::make_shared<DropReading>(
        m_queue, std::nullopt, readLimit,
        DropReading::Listener { std::move(completion),
                                [this](DropReading::Gain) { m_reading.reset(); } });
    m_reading->start();
    return true;
}

void X11Clipboard::write(const QList<Address> &urls)
{
    offer(DragFormats::clipboardFormatsFor(urls, m_textFolder));
}

void X11Clipboard::writeText(const QList<Address> &urls)
{
    offer(DragFormats::textFormatsFor(urls));
}

void X11Clipboard::offer(const QList<DragFormats::Format> &formats)
{
    prepare();
    m_offer.set(m_window, formats);
    // A selection is taken at the X server's time.
    m_wantsTime = true;
    Xcb::askTime(m_connection, m_window, m_atoms("_VANTLE_TIME"));
}

/// Asks the clipboard manager to save at once, so that the end of the program,
/// however it comes, loses nothing. Its answer tells nothing that matters.
void X11Clipboard::takeOver(xcb_timestamp_t time)
{
    m_wantsTime = false;
    m_time = time;
    m_offer.setTime(time);
    xcb_set_selection_owner(m_connection, m_window, m_atoms("CLIPBOARD"), time);
    xcb_convert_selection(m_connection, m_window, m_atoms("CLIPBOARD_MANAGER"),
                          m_atoms("SAVE_TARGETS"), m_atoms("_VANTLE_SAVED"), time);
    xcb_flush(m_connection);
}

bool X11Clipboard::nativeEventFilter(const QByteArray &type, void *message, qintptr *)
{
    if (type != "xcb_generic_event_t" || m_window == Xcb::none)
        return false;
    switch (static_cast<xcb_generic_event_t *>(message)->response_type & 0x7f) {
    case XCB_PROPERTY_NOTIFY: {
        const auto &notify = *static_cast<xcb_property_notify_event_t *>(message);
        if (notify.window == m_window && m_wantsTime && notify.atom == m_atoms("_VANTLE_TIME"))
            takeOver(notify.time);
        return notify.window == m_window;
    }
    case XCB_SELECTION_CLEAR: {
        const auto &clear = *static_cast<xcb_selection_clear_event_t *>(message);
        if (clear.owner != m_window)
            return false;
        // One that comes after the next copy speaks of the last.
        if (!m_wantsTime && clear.time >= m_time)
            m_offer.clear();
        return true;
    }
    case XCB_SELECTION_NOTIFY:
        return static_cast<xcb_selection_notify_event_t *>(message)->requestor == m_window;
    default:
        return false;
    }
}
