#include "platform/linux/x11/WindowScale.h"

#include "platform/linux/x11/Xcb.h"

#include <QApplication>
#include <QBackingStore>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

namespace {

/// In pixels, as the X server has it. Waits for the X server.
std::optional<QRect> nativeFrame(xcb_connection_t *connection, xcb_window_t window)
{
    const auto geometry = Xcb::owned(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    if (!geometry)
        return std::nullopt;
    const auto moved = xcb_translate_coordinates(connection, window, geometry->root, 0, 0);
    const auto place = Xcb::owned(xcb_translate_coordinates_reply(connection, moved, nullptr));
    if (!place)
        return std::nullopt;
    return QRect(place->dst_x, place->dst_y, geometry->width, geometry->height);
}

bool nearlyEqual(const QSize &one, const QSize &other)
{
    const QSize by = one - other;
    return std::abs(by.width()) <= 1 && std::abs(by.height()) <= 1;
}

/// The place stays the same in pixels where the larger window fits there.
QPoint placeFor(const QWidget &widget, const QPoint &native, const QSize &size,
                const QScreen &screen)
{
    const QRect room = screen.availableGeometry() - widget.windowHandle()->frameMargins();
    const QPoint origin = screen.geometry().topLeft();
    const QPoint wanted = origin + (native - origin) / screen.devicePixelRatio();
    return { std::max(room.left(), std::min(wanted.x(), room.right() + 1 - size.width())),
             std::max(room.top(), std::min(wanted.y(), room.bottom() + 1 - size.height())) };
}

void fit(QWidget &widget, const QRect &frame)
{
    // What it already has in points, the toolkit would neither ask the X server for nor
    // make a picture of another size for.
    widget.windowHandle()->setGeometry(frame.adjusted(0, 0, 0, 1));
    widget.windowHandle()->setGeometry(frame);
    widget.setGeometry(frame);
    if (QBackingStore *store = widget.backingStore())
        store->resize(frame.size());
    for (QWidget *each : widget.findChildren<QWidget *>())
        each->update();
    widget.update();
}

}

WindowScale::WindowScale()
{
    for (QScreen *screen : QGuiApplication::screens())
        follow(screen);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &m_context,
                     [this](QScreen *screen) { follow(screen); });
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &m_context,
                     [this](const QScreen *screen) { m_scales.remove(screen); });
    if (Xcb::toolkitConnection())
        qApp->installNativeEventFilter(this);
}

void WindowScale::follow(QScreen *screen)
{
    m_scales.insert(screen, { screen->devicePixelRatio(), {} });
    QObject::connect(screen, &QScreen::logicalDotsPerInchChanged, &m_context, [this, screen] {
        note(*screen);
        // The toolkit takes the windows' pixels for their new size in a moment.
        QMetaObject::invokeMethod(
            screen, [this, screen] { fitAll(*screen); }, Qt::QueuedConnection);
    });
}

/// Before the toolkit sees the first report under a ratio that it has not told of yet.
bool WindowScale::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) == XCB_CONFIGURE_NOTIFY) {
        for (const QScreen *screen : QGuiApplication::screens())
            note(*screen);
    }
    return false;
}

/// Remembers the windows' sizes, if the ratio has just changed.
void WindowScale::note(const QScreen &screen)
{
    const auto scale = m_scales.find(&screen);
    if (scale == m_scales.end() || screen.devicePixelRatio() == scale->ratio
        || !scale->frames.isEmpty())
        return;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (!widget->windowHandle() || widget->screen() != &screen)
            continue;
        const auto native
            = nativeFrame(Xcb::toolkitConnection(), static_cast<xcb_window_t>(widget->winId()));
        if (native)
            scale->frames.emplaceBack(
                widget, Frame { native->topLeft(), sizeInPoints(*widget, native->size(), *scale) });
    }
}

/// What a window was asked for counts while its manager has not answered, and where
/// it differs from the answer by rounding alone.
QSize WindowScale::sizeInPoints(const QWidget &widget, const QSize &native, const Scale &scale)
{
    const auto known = m_asked.constFind(&widget);
    if (known == m_asked.cend())
        QObject::connect(&widget, &QObject::destroyed, &m_context,
                         [this, key = &widget] { m_asked.remove(key); });
    const bool isAsked = known != m_asked.cend()
        && (native == known->before || nearlyEqual(native, known->size * scale.ratio));
    const QSize size = isAsked ? known->size : native / scale.ratio;
    m_asked.insert(&widget, { native, size });
    return size;
}

void WindowScale::fitAll(const QScreen &screen)
{
    Scale &scale = m_scales[&screen];
    scale.ratio = screen.devicePixelRatio();
    for (const auto &[widget, frame] : std::exchange(scale.frames, {})) {
        if (widget)
            fit(*widget, { placeFor(*widget, frame.place, frame.size, screen), frame.size });
    }
}
