#include "platform/linux/x11/X11Presence.h"

#include "platform/linux/x11/Xcb.h"

#include <QAccessibleWidget>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <xcb/shape.h>

#include <utility>
#include <vector>

namespace {

constexpr const char *ofWindow = "_vantle_presence";

/// To the toolkit's own it would always be showing.
class AccessibleWindow final : public QAccessibleWidget
{
public:
    AccessibleWindow(QWidget *window, const X11Presence &presence)
        : QAccessibleWidget(window, QAccessible::Window)
        , m_presence(presence)
    {
    }
    QAccessible::State state() const override
    {
        auto state = QAccessibleWidget::state();
        state.invisible = !m_presence.isShown();
        return state;
    }

private:
    const X11Presence &m_presence;
};

QAccessibleInterface *accessibleWindow(const QString &, QObject *object)
{
    const auto *presence
        = static_cast<const X11Presence *>(object->property(ofWindow).value<void *>());
    return presence ? new AccessibleWindow(static_cast<QWidget *>(object), *presence) : nullptr;
}

}

X11Presence::X11Presence(QWidget &window, xcb_connection_t *connection, xcb_window_t root, Cut cut)
    : m_window(window)
    , m_connection(connection)
    , m_compositor(connection, root, X11ManagerSelection::compositing)
    , m_cut(std::move(cut))
{
    [[maybe_unused]] static const bool installed
        = (QAccessible::installFactory(accessibleWindow), true);
    window.setProperty(ofWindow, QVariant::fromValue<void *>(this));
    window.installEventFilter(this);
    m_compositor.onChange = [this] {
        fit();
        m_window.update();
    };
}

X11Presence::~X11Presence()
{
    m_window.setProperty(ofWindow, {});
    if (m_view)
        m_view->setParent(nullptr);
}

/// Hidden, or it would be laid out and given its fonts at the start.
void X11Presence::setView(QWidget *view)
{
    m_view = view;
    view->setParent(&m_window);
    view->setVisible(m_isShown);
}

void X11Presence::map()
{
    if (m_window.isVisible())
        return;
    applyShape();
    applyOpacity();
    m_window.show();
    constexpr std::chrono::seconds idle(1);
    QTimer::singleShot(idle, this, [this] { prepare(); });
}

/// The first painting loads fonts and icons, for which nobody should wait when the panel is to
/// show.
void X11Presence::prepare()
{
    if (std::exchange(m_isNew, false) && m_view)
        m_view->grab();
}

/// The picture follows on the same connection: the server paints only what the shape lets it,
/// and that of a frame of the window manager's, which follows the window's.
void X11Presence::show()
{
    if (m_isShown)
        return;
    map();
    m_isShown = true;
    if (m_view)
        m_view->show();
    if (m_focused)
        m_focused->setFocus();
    prepare(); // The first painting takes long: that is over before anything shows.
    fit();
    applyOpacity();
    m_window.repaint();
    m_awaitsExposure = true;
    tell(QAccessible::ObjectShow);
}

void X11Presence::hide()
{
    if (!m_isShown)
        return;
    m_isShown = false;
    if (canFade())
        wipe();
    applyShape();
    applyOpacity();
    m_focused = m_window.focusWidget();
    if (m_view)
        m_view->hide();
    tell(QAccessible::ObjectHide);
}

/// Or what a compositor keeps of it would be seen for a moment when it comes back.
void X11Presence::wipe()
{
    const auto context = xcb_generate_id(m_connection);
    const quint32 nothing = 0;
    const xcb_rectangle_t whole { 0, 0, static_cast<uint16_t>(size().width()),
                                  static_cast<uint16_t>(size().height()) };
    xcb_create_gc(m_connection, context, native(), XCB_GC_FOREGROUND, &nothing);
    xcb_poly_fill_rectangle(m_connection, native(), context, 1, &whole);
    xcb_free_gc(m_connection, context);
}

void X11Presence::setOpacity(double opacity)
{
    m_opacity = canFade() ? opacity : 1;
    applyOpacity();
}

void X11Presence::fit()
{
    m_fitted = size();
    if (m_isShown)
        applyShape();
}

void X11Presence::handleEvent(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f;
    // Also of the same size in points, when the dots per inch change.
    if (type == XCB_CONFIGURE_NOTIFY && m_fitted != size())
        fit();
    else if (type == XCB_EXPOSE)
        m_awaitsExposure = false;
}

/// Until the toolkit knows that all can be seen it might paint a part that is, alone.
bool X11Presence::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::UpdateRequest && m_awaitsExposure)
        m_window.update();
    return false;
}

xcb_window_t X11Presence::native() const
{
    return static_cast<xcb_window_t>(m_window.internalWinId());
}

/// In pixels.
QSize X11Presence::size() const
{
    return QSizeF(QSizeF(m_window.size()) * m_window.devicePixelRatio()).toSize();
}

void X11Presence::applyShape()
{
    const bool isCut = !m_isShown || !canFade();
    QRegion left;
    if (m_isShown && isCut)
        left = m_cut({ QPoint(), size() }, m_window.devicePixelRatio());
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect &each : left)
        rectangles.push_back({ static_cast<int16_t>(each.x()), static_cast<int16_t>(each.y()),
                               static_cast<uint16_t>(each.width()),
                               static_cast<uint16_t>(each.height()) });
    for (const xcb_shape_kind_t kind : { XCB_SHAPE_SK_BOUNDING, XCB_SHAPE_SK_INPUT }) {
        if (!isCut)
            xcb_shape_mask(m_connection, XCB_SHAPE_SO_SET, kind, native(), 0, 0, Xcb::none);
        else
            xcb_shape_rectangles(m_connection, XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_UNSORTED,
                                 native(), 0, 0, static_cast<uint32_t>(rectangles.size()),
                                 rectangles.data());
    }
    xcb_flush(m_connection); // The toolkit waits for something to paint.
}

void X11Presence::applyOpacity()
{
    m_window.setWindowOpacity(m_isShown ? m_opacity : 0);
    xcb_flush(m_connection);
}

void X11Presence::tell(QAccessible::Event kind)
{
    QAccessibleEvent event(&m_window, kind);
    QAccessible::updateAccessibility(&event);
}
