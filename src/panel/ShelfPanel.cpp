#include "panel/ShelfPanel.h"

#include "platform/PointerMonitor.h"
#include "platform/Preferences.h"
#include "store/QuickLookController.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr QSizeF defaultSize(240, 300);
constexpr double topRightMargin = 24;
constexpr double cursorDistance = 14;
constexpr double cursorMargin = 8;
constexpr double reachableStrip
    = 40; // What must stay on a screen, so that a pointer can take hold.
constexpr double slideDistance = 10;
constexpr double showDuration = 0.24;
constexpr double hideDuration = 0.18;
constexpr double storeDelay = 0.5;
constexpr int spaceKey = 49;

QString frameKey()
{
    return QStringLiteral("ShelfPanelFrame");
}

double overlap(const QRectF &a, const QRectF &b)
{
    const QRectF common = a & b;
    return common.width() * common.height();
}

/// The nearest place at which the head of the panel can be reached.
QPointF reachableOrigin(const QRectF &frame, const QRectF &area)
{
    const double x = std::max(area.left() - frame.width() + reachableStrip,
                              std::min(frame.left(), area.right() - reachableStrip));
    const double y = std::max(area.top(), std::min(frame.top(), area.bottom() - reachableStrip));
    return { x, y };
}

std::optional<QRectF> storedFrame(const QJsonValue &value)
{
    const QJsonArray array = value.toArray();
    if (array.size() != 4)
        return std::nullopt;
    std::array<double, 4> numbers {};
    for (qsizetype i = 0; i < array.size(); ++i) {
        const double number = array.at(i).toDouble(NAN);
        // Beyond this a window system's coordinates end.
        if (!(std::abs(number) <= 32767))
            return std::nullopt;
        numbers[static_cast<size_t>(i)] = number;
    }
    if (numbers[2] <= 0 || numbers[3] <= 0)
        return std::nullopt;
    return QRectF(numbers[0], numbers[1], numbers[2], numbers[3]);
}

}

ShelfPanel::ShelfPanel(PanelWindow &window, Screens &screens, PointerMonitor &pointer,
                       Preferences &preferences, DragSession &session, Icons &icons,
                       MainQueue &queue, QuickLookController &ql)
    : m_window(window)
    , m_screens(screens)
    , m_pointer(pointer)
    , m_preferences(preferences)
    , m_queue(queue)
    , m_ql(ql)
    , m_rowDrag(session, icons)
    , m_animation(queue)
{
    m_window.setFrame(QRectF(m_window.frame().topLeft(), defaultSize));
    moveTo(topRightOrigin());
    restoreFrame();

    m_rowDrag.beginPress = [this] {
        if (beginPress)
            beginPress();
    };
    m_rowDrag.dragURLs = [this] { return dragURLs ? dragURLs() : std::nullopt; };
    m_rowDrag.onDraggedOut = [this](const QList<QUrl> &urls) {
        if (onDraggedOut)
            onDraggedOut(urls);
    };
    m_window.onButton = [this](WindowButtonEvent event, const QPointF &location) {
        return m_rowDrag.routeRowDrag(event, location);
    };
    m_window.onKey = [this](const KeyEvent &event) { return routeKey(event); };
    m_window.onClose = [this] { hide(); };
    m_window.onUserFrame
        = [this] { m_pendingStore = m_queue.after(storeDelay, [this] { storeFrame(); }); };
}

ShelfPanel::~ShelfPanel()
{
    m_window.onButton = nullptr;
    m_window.onKey = nullptr;
    m_window.onClose = nullptr;
    m_window.onUserFrame = nullptr;
}

std::optional<Screen> ShelfPanel::activeScreen() const
{
    if (const auto location = m_pointer.location()) {
        for (const Screen &screen : m_screens.all()) {
            if (screen.holds(*location))
                return screen;
        }
    }
    return m_screens.main();
}

/// The screen that shows most of that frame; none if it lies on no screen.
std::optional<Screen> ShelfPanel::screenOf(const QRectF &frame) const
{
    std::optional<Screen> best;
    for (const Screen &screen : m_screens.all()) {
        const double area = overlap(screen.visibleFrame, frame);
        if (area > (best ? overlap(best->visibleFrame, frame) : 0))
            best = screen;
    }
    return best;
}

QPointF ShelfPanel::topRightOrigin() const
{
    const QRectF frame = m_window.frame();
    const auto screen = activeScreen();
    if (!screen)
        return frame.topLeft();
    const QRectF &visible = screen->visibleFrame;
    return { visible.right() - frame.width() - topRightMargin, visible.top() + topRightMargin };
}

/// Below and to the right of the pointer. Where the panel is larger than the
/// screen, its head and its right edge are what stays inside.
QPointF ShelfPanel::cursorOrigin() const
{
    const auto location = m_pointer.location();
    const auto screen = activeScreen();
    if (!location || !screen)
        return topRightOrigin();
    const QRectF &visible = screen->visibleFrame;
    const QSizeF size = m_window.frame().size();
    const double x
        = std::min(visible.right() - size.width() - cursorMargin,
                   std::max(location->x() + cursorDistance, visible.left() + cursorMargin));
    const double y = std::max(
        visible.top() + cursorMargin,
        std::min(location->y() + cursorDistance, visible.bottom() - size.height() - cursorMargin));
    return { x, y };
}

QPointF ShelfPanel::lastOrigin() const
{
    const QRectF frame = m_window.frame();
    const auto screen = screenOf(frame);
    return screen ? reachableOrigin(frame, screen->visibleFrame) : topRightOrigin();
}

QPointF ShelfPanel::originFor(const QString &mode) const
{
    if (mode == QLatin1String("cursor"))
        return cursorOrigin();
    if (mode == QLatin1String("last"))
        return lastOrigin();
    return topRightOrigin();
}

void ShelfPanel::summon()
{
    if (onWillShow)
        onWillShow();
    const QPointF origin = originFor(positionMode);
    if (m_shown) {
        moveTo(origin);
        m_window.orderFront();
        return;
    }
    m_shown = true;
    m_animation.cancel();
    moveTo(origin);
    if (!m_window.canFade()) {
        setAppearance(1, 0);
        m_window.orderFront();
        return;
    }
    // One that is still fading out comes back from where it is.
    if (!m_window.isVisible())
        setAppearance(0, -slideDistance);
    m_window.orderFront();
    const double opacity = m_opacity;
    const double slide = m_slide;
    m_animation.begin(showDuration, AnimationCurve::EaseOut,
                      [this, opacity, slide](double progress) {
                          setAppearance(opacity + (1 - opacity) * progress, slide * (1 - progress));
                      });
}

void ShelfPanel::summonWithFocus()
{
    summon();
    m_window.focus();
}

void ShelfPanel::hide()
{
    if (!m_shown)
        return;
    m_shown = false;
    m_animation.cancel();
    const auto leave = [this] {
        m_window.orderOut();
        setAppearance(1, 0); // The next summon starts from a clean value.
    };
    if (!m_window.canFade()) {
        leave();
        return;
    }
    const double opacity = m_opacity;
    m_animation.begin(
        hideDuration, AnimationCurve::EaseIn,
        [this, opacity](double progress) { setAppearance(opacity * (1 - progress), m_slide); },
        leave);
}

void ShelfPanel::setAppearance(double opacity, double slide)
{
    m_opacity = opacity;
    m_slide = slide;
    m_window.setOpacity(opacity);
    m_window.setSlide({ 0, slide });
}

void ShelfPanel::moveTo(const QPointF &origin)
{
    m_window.setFrame(QRectF(origin, m_window.frame().size()));
}

/// Over the place that was just set. A size that no longer fits is cut, and a
/// place that no screen shows any more is left for the top right.
void ShelfPanel::restoreFrame()
{
    const auto stored = storedFrame(m_preferences.value(frameKey()));
    if (!stored)
        return;
    const auto shown = screenOf(*stored);
    const auto screen = shown ? shown : activeScreen();
    QSizeF size = stored->size();
    if (screen)
        size = size.boundedTo(screen->visibleFrame.size());
    size = size.expandedTo(PanelWindow::smallestSize);
    m_window.setFrame(
        QRectF(shown ? reachableOrigin(QRectF(stored->topLeft(), size), shown->visibleFrame)
                     : m_window.frame().topLeft(),
               size));
    if (!shown)
        moveTo(topRightOrigin());
}

void ShelfPanel::storeFrame()
{
    const QRectF frame = m_window.frame();
    m_preferences.setValue(frameKey(),
                           QJsonArray { frame.x(), frame.y(), frame.width(), frame.height() });
}

/// With Command the key commands come first, because a space then is no space;
/// without it the preview's space comes before them. Each key is offered to
/// onKey once at most.
bool ShelfPanel::routeKey(const KeyEvent &event)
{
    const bool command = (event.modifiers & EventModifier::Command) != 0;
    if (command && onKey && onKey(event))
        return true;
    if (event.keyCode == spaceKey && !m_ql.urls.isEmpty() && onPreview && onPreview())
        return true;
    return !command && onKey && onKey(event);
}
