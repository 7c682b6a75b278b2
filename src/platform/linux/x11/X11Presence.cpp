#include "platform/linux/x11/X11Presence.h"

#include "platform/linux/x11/Xcb.h"

#include <QAccessibleWidget>
#include <QWidget>

#include <xcb/shape.h>

#include <vector>

namespace {

constexpr const char *property = "_vantle_presence";

/// To the toolkit's own it would always be showing.
class AccessibleWindow final : public QAccessibleWidget
{
public:
    AccessibleWindow(QWidget *window, const X11Presence &presence)
        : QAccessibleWidget(window)
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
    const auto *presence = object->property(property).value<X11Presence *>();
    return presence ? new AccessibleWindow(static_cast<QWidget *>(object), *presence) : nullptr;
}

}

X11Presence::X11Presence(QWidget &window, xcb_connection_t *connection)
    : m_window(window)
    , m_connection(connection)
{
    [[maybe_unused]] static const bool installed
        = (QAccessible::installFactory(accessibleWindow), true);
    window.setProperty(property, QVariant::fromValue(this));
}

X11Presence::~X11Presence()
{
    m_window.setProperty(property, {});
}

void X11Presence::map()
{
    if (m_window.isVisible())
        return;
    applyShape();
    applyOpacity();
    m_window.show();
}

void X11Presence::show()
{
    if (m_isShown)
        return;
    map();
    m_isShown = true;
    applyOpacity();
    applyShape();
    tell(QAccessible::ObjectShow);
}

void X11Presence::hide()
{
    if (!m_isShown)
        return;
    m_isShown = false;
    applyShape();
    applyOpacity();
    tell(QAccessible::ObjectHide);
}

void X11Presence::setShape(const QRegion &region)
{
    m_shape = region;
    if (m_isShown)
        applyShape();
}

void X11Presence::setOpacity(double opacity)
{
    m_opacity = opacity;
    applyOpacity();
}

void X11Presence::applyShape()
{
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect &each : m_shape)
        rectangles.push_back({ static_cast<int16_t>(each.x()), static_cast<int16_t>(each.y()),
                               static_cast<uint16_t>(each.width()),
                               static_cast<uint16_t>(each.height()) });
    const auto window = static_cast<xcb_window_t>(m_window.internalWinId());
    for (const xcb_shape_kind_t kind : { XCB_SHAPE_SK_BOUNDING, XCB_SHAPE_SK_INPUT }) {
        if (m_isShown && rectangles.empty())
            xcb_shape_mask(m_connection, XCB_SHAPE_SO_SET, kind, window, 0, 0, Xcb::none);
        else
            xcb_shape_rectangles(
                m_connection, XCB_SHAPE_SO_SET, kind, XCB_CLIP_ORDERING_UNSORTED, window, 0, 0,
                m_isShown ? static_cast<uint32_t>(rectangles.size()) : 0, rectangles.data());
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
