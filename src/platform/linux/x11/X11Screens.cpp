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

/// Of all windows that the window manager knows; panels, and whoever else has
/// struts, are watched. Waits for the X server.
QList<Strut> readStruts(xcb_connection_t *connection, xcb_window_t root)
{
    Xcb::Atoms atoms(connection);
    const auto windows = Xcb::property32(connection, root, atoms("_NET_CLIENT_LIST"),
                                         XCB_ATOM_WINDOW, mostWindows);
    const auto ask = [&](xcb_window_t window, const char *name, xcb_atom_t type, quint32 size) {
        return xcb_get_property(connection, 0, window, atoms(name), type, 0, size);
    };
    struct Asked
    {
        xcb_window_t window;
        xcb_get_property_cookie_t partial, whole, type;
    };
    std::vector<Asked> asked;
    for (const xcb_window_t window : windows)
        asked.push_back({ window, ask(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL, 12),
                          ask(window, "_NET_WM_STRUT", XCB_ATOM_CARDINAL, 4),
                          ask(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, 8) });
    QList<Strut> struts;
    for (const auto &each : asked) {
        const auto answer = [&](xcb_get_property_cookie_t cookie) {
            return Xcb::values32(
                Xcb::owned(xcb_get_property_reply(connection, cookie, nullptr)).get());
        };
        const auto partial = answer(each.partial);
        const auto whole = answer(each.whole);
        const auto types = answer(each.type);
        appendStruts(partial.isEmpty() ? whole : partial, struts);
        if (!partial.isEmpty() || !whole.isEmpty()
            || types.contains(atoms("_NET_WM_WINDOW_TYPE_DOCK")))
            Xcb::listenTo(connection, each.window,
                          XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    }
    return struts;
}

/// What a shell that draws its own bars, which are no windows, leaves of each monitor on the
/// desktop that shows. Waits for the X server.
QList<QRect> readWorkAreas(xcb_connection_t *connection, xcb_window_t root)
{
    constexpr quint32 mostNumbers = 4 * 64;
    Xcb::Atoms atoms(connection);
    const auto desktop
        = Xcb::property32(connection, root, atoms("_NET_CURRENT_DESKTOP"), XCB_ATOM_CARDINAL, 1)
              .value(0);
    const auto values
        = Xcb::property32(connection, root, atoms("_GTK_WORKAREAS_D" + QByteArray::number(desktop)),
                          XCB_ATOM_CARDINAL, mostNumbers);
    QList<QRect> areas;
    for (qsizetype i = 0; i + 4 <= values.size(); i += 4) {
        const auto number = [&](qsizetype at) { return static_cast<int>(values.at(i + at)); };
        areas.append({ number(0), number(1), number(2), number(3) });
    }
    return areas;
}

QSize sizeOf(xcb_connection_t *connection, xcb_window_t window)
{
    const auto reply = Xcb::owned(
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
    const auto areas = readWorkAreas(connection, root);
    const auto scales = NativeGeometry::screenScales();
    for (qsizetype i = 0; i < screens.size(); ++i) {
        const QRect &monitor = scales.at(i).native;
        const QRect visible
            = workArea(monitor, areas).value_or(withoutStruts(monitor, size, struts));
        result.append(
            { screens.at(i)->geometry(), NativeGeometry::toPoints(QRectF(visible), scales.at(i)) });
    }
    return result;
}

}

std::optional<QRect> workArea(const QRect &monitor, const QList<QRect> &areas)
{
    for (const QRect &area : areas) {
        if (!area.isEmpty() && monitor.contains(area))
            return area;
    }
    return std::nullopt;
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
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &m_context,
                     [this](const QScreen *screen) {
                         watch(screen);
                         forget();
                     });
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &m_context, [this] { forget(); });
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, &m_context,
                     [this] { forget(); });
    for (const QScreen *screen : QGuiApplication::screens())
        watch(screen);
    if (auto *connection = Xcb::toolkitConnection()) {
        Xcb::Atoms atoms(connection);
        m_followed = { atoms("_NET_CLIENT_LIST"), atoms("_NET_WM_STRUT"),
                       atoms("_NET_WM_STRUT_PARTIAL"), atoms("_NET_CURRENT_DESKTOP"),
                       atoms("_GTK_WORKAREAS_D0") }; // All work areas change together.
        qApp->installNativeEventFilter(this);
    }
    m_told = current();
}

std::optional<Screen> X11Screens::main() const
{
    const auto &screens = current(); // The toolkit lists the primary one first.
    return screens.isEmpty() ? std::nullopt : std::optional(screens.first());
}

/// A panel between two monitors changes nothing in _NET_WORKAREA, which the
/// toolkit follows; but it comes and goes as a window, and says how much it takes.
/// The toolkit watches the root window's properties already.
bool X11Screens::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto atom = reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom;
    if (m_followed.contains(atom) && QGuiApplication::screens().size() > 1)
        forget();
    return false;
}

void X11Screens::watch(const QScreen *screen)
{
    QObject::connect(screen, &QScreen::geometryChanged, &m_context, [this] { forget(); });
    QObject::connect(screen, &QScreen::availableGeometryChanged, &m_context, [this] { forget(); });
}

/// Changes come in crowds: they are told of when all of them have been heard.
void X11Screens::forget()
{
    m_current.reset();
    if (!std::exchange(m_telling, true))
        QMetaObject::invokeMethod(
            &m_context, [this] { tellChange(); }, Qt::QueuedConnection);
}

void X11Screens::tellChange()
{
    m_telling = false;
    if (std::exchange(m_told, current()) != current() && onChanged)
        onChanged();
}

const QList<Screen> &X11Screens::current() const
{
    if (!m_current)
        m_current = readScreens();
    return *m_current;
}
