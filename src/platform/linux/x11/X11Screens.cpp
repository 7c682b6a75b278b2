#include "platform/linux/x11/X11Screens.h"

#include "platform/linux/x11/Xcb.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

namespace {

constexpr uint32_t mostWindows = 4096;

using PropertyReply = Xcb::Owned<xcb_get_property_reply_t>;

QList<quint32> numbers(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->format != 32)
        return {};
    const auto *values = static_cast<const quint32 *>(xcb_get_property_value(reply));
    return { values, values + reply->value_len };
}

/// Of _NET_WM_STRUT_PARTIAL, or of _NET_WM_STRUT, which tells no stretch.
void appendStruts(const QList<quint32> &property, QList<Strut> &struts)
{
    if (property.size() < 4)
        return;
    using Edge = Strut::Edge;
    constexpr std::array edges { Edge::Left, Edge::Right, Edge::Top, Edge::Bottom };
    constexpr quint32 largest = std::numeric_limits<qint16>::max(); // What X can address.
    const bool isPartial = property.size() >= 12;
    for (int i = 0; i < 4; ++i) {
        const auto bounded
            = [&](int index) { return static_cast<int>(std::min(property.at(index), largest)); };
        if (property.at(i) > 0)
            struts.append({ edges.at(static_cast<size_t>(i)), bounded(i),
                            isPartial ? bounded(4 + 2 * i) : 0,
                            isPartial ? bounded(5 + 2 * i) : static_cast<int>(largest) });
    }
}

/// Of all windows that the window manager knows. Waits for the X server.
QList<Strut> readStruts(xcb_connection_t *connection, xcb_window_t root)
{
    Xcb::Atoms atoms(connection);
    atoms.fetch({ "_NET_CLIENT_LIST", "_NET_WM_STRUT_PARTIAL", "_NET_WM_STRUT" });
    const auto windows = Xcb::property32(connection, root, atoms("_NET_CLIENT_LIST"),
                                         XCB_ATOM_WINDOW, mostWindows);
    const auto ask = [&](xcb_window_t window, const char *name, quint32 size) {
        return xcb_get_property(connection, 0, window, atoms(name), XCB_ATOM_CARDINAL, 0, size);
    };
    std::vector<std::pair<xcb_get_property_cookie_t, xcb_get_property_cookie_t>> asked;
    for (const xcb_window_t window : windows)
        asked.emplace_back(ask(window, "_NET_WM_STRUT_PARTIAL", 12),
                           ask(window, "_NET_WM_STRUT", 4));
    QList<Strut> struts;
    for (const auto &[partialCookie, wholeCookie] : asked) {
        const PropertyReply partial(xcb_get_property_reply(connection, partialCookie, nullptr));
        const PropertyReply whole(xcb_get_property_reply(connection, wholeCookie, nullptr));
        const auto newer = numbers(partial.get());
        appendStruts(newer.isEmpty() ? numbers(whole.get()) : newer, struts);
    }
    return struts;
}

QSize sizeOf(xcb_connection_t *connection, xcb_window_t window)
{
    const Xcb::Owned<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    return reply ? QSize(reply->width, reply->height) : QSize();
}

QList<Screen> readScreens()
{
    const auto screens = QGuiApplication::screens();
    auto *connection = Xcb::toolkitConnection();
    QList<Screen> result;
    if (screens.size() < 2 || !connection) {
        for (const QScreen *screen : screens)
            result.append({ screen->geometry(), screen->availableGeometry() });
        return result;
    }
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const QSize size = sizeOf(connection, root);
    const auto struts = readStruts(connection, root);
    const auto scales = NativeGeometry::screenScales();
    for (qsizetype i = 0; i < screens.size(); ++i) {
        const QRect visible = withoutStruts(scales.at(i).native, size, struts);
        result.append(
            { screens.at(i)->geometry(), NativeGeometry::toPoints(QRectF(visible), scales.at(i)) });
    }
    return result;
}

}

QRect withoutStruts(const QRect &monitor, const QSize &root, const QList<Strut> &struts)
{
    QRect visible = monitor;
    for (const auto &strut : struts) {
        const bool isVertical = strut.edge == Strut::Edge::Left || strut.edge == Strut::Edge::Right;
        const int first = isVertical ? monitor.top() : monitor.left();
        const int last = isVertical ? monitor.bottom() : monitor.right();
        if (strut.to < first || strut.from > last)
            continue;
        const int farX = root.width() - strut.size;
        const int farY = root.height() - strut.size;
        switch (strut.edge) {
        case Strut::Edge::Left:
            if (monitor.left() < strut.size && strut.size <= monitor.right())
                visible.setLeft(std::max(visible.left(), strut.size));
            break;
        case Strut::Edge::Right:
            if (monitor.left() < farX && farX <= monitor.right())
                visible.setRight(std::min(visible.right(), farX - 1));
            break;
        case Strut::Edge::Top:
            if (monitor.top() < strut.size && strut.size <= monitor.bottom())
                visible.setTop(std::max(visible.top(), strut.size));
            break;
        case Strut::Edge::Bottom:
            if (monitor.top() < farY && farY <= monitor.bottom())
                visible.setBottom(std::min(visible.bottom(), farY - 1));
            break;
        }
    }
    return visible.isValid() ? visible : monitor;
}

X11Screens::X11Screens()
{
    const auto forget = [this] { m_current.reset(); };
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &m_context,
                     [this](const QScreen *screen) { watch(screen); });
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &m_context, forget);
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &m_context, forget);
    for (const QScreen *screen : QGuiApplication::screens())
        watch(screen);
    if (auto *connection = Xcb::toolkitConnection()) {
        m_clientList = Xcb::Atoms(connection)("_NET_CLIENT_LIST");
        qApp->installNativeEventFilter(this);
    }
}

QList<Screen> X11Screens::all() const
{
    return current();
}

std::optional<Screen> X11Screens::main() const
{
    const auto &screens = current(); // The toolkit lists the primary one first.
    return screens.isEmpty() ? std::nullopt : std::optional(screens.first());
}

/// A panel between two monitors changes nothing in _NET_WORKAREA, which the
/// toolkit follows; but it comes and goes as a window. The toolkit watches the
/// root window's properties already.
bool X11Screens::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY
        && reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom == m_clientList)
        m_current.reset();
    return false;
}

void X11Screens::watch(const QScreen *screen)
{
    const auto forget = [this] { m_current.reset(); };
    QObject::connect(screen, &QScreen::geometryChanged, &m_context, forget);
    QObject::connect(screen, &QScreen::availableGeometryChanged, &m_context, forget);
    forget();
}

const QList<Screen> &X11Screens::current() const
{
    if (!m_current)
        m_current = readScreens();
    return *m_current;
}
