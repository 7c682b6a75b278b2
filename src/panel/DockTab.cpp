#include "panel/DockTab.h"

#include <algorithm>

namespace {

constexpr double hoverDelay = 0.2; // Seconds.
constexpr double fadeInDuration = 0.18;
constexpr double fadeOutDuration = 0.12;
constexpr double verticalMargin = 8;

}

DockTab::DockTab(TabWindow &window, MainQueue &queue)
    : m_window(window)
    , m_queue(queue)
    , m_fade(queue)
{
    m_window.onPointerEntered
        = [this] { m_hoverTimer = m_queue.after(hoverDelay, [this] { fire(); }); };
    m_window.onPointerLeft = [this] { m_hoverTimer.reset(); };
    m_window.onPressed = [this] { fire(); };
    m_window.onDragEntered = [this] { fire(); };
}

DockTab::~DockTab()
{
    m_window.onPointerEntered = nullptr;
    m_window.onPointerLeft = nullptr;
    m_window.onPressed = nullptr;
    m_window.onDragEntered = nullptr;
}

void DockTab::show(DockEdge edge, const Screen &screen, double centerY)
{
    m_wanted = true;
    m_fade.cancel();
    model.edge.set(edge);
    place(edge, screen, centerY);
    const auto setOpacity = [this](double opacity) {
        m_opacity = opacity;
        m_window.setOpacity(opacity);
    };
    if (!fades()) {
        setOpacity(1);
        m_window.orderFront();
        return;
    }
    // One that is still fading out comes back from where it is.
    if (!m_window.isVisible())
        setOpacity(0);
    m_window.orderFront();
    m_fade.begin(fadeInDuration, AnimationCurve::EaseOut,
                 [setOpacity, from = m_opacity](double progress) {
                     setOpacity(from + (1 - from) * progress);
                 });
}

/// On a screen that is too low for it, its head is what stays inside.
void DockTab::place(DockEdge edge, const Screen &screen, double centerY)
{
    const QRectF &visible = screen.visibleFrame;
    constexpr QSizeF size = TabWindow::size;
    const double x = edge == DockEdge::Right ? visible.right() - size.width() : visible.left();
    const double y = std::max(
        visible.top() + verticalMargin,
        std::min(centerY - size.height() / 2, visible.bottom() - size.height() - verticalMargin));
    m_window.place({ QPointF(x, y), size }, edge);
}

void DockTab::dismiss()
{
    if (!m_wanted)
        return;
    m_wanted = false;
    m_hoverTimer.reset();
    m_fade.cancel();
    const auto leave = [this] {
        m_window.orderOut();
        m_opacity = 1;
        m_window.setOpacity(1);
    };
    if (!fades()) {
        leave();
        return;
    }
    m_fade.begin(
        fadeOutDuration, AnimationCurve::EaseIn,
        [this, from = m_opacity](double progress) {
            m_opacity = from * (1 - progress);
            m_window.setOpacity(m_opacity);
        },
        leave);
}

void DockTab::fire()
{
    m_hoverTimer.reset();
    if (onActivate)
        onActivate();
}
