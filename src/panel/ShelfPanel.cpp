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
constexpr double summonHold = 3; // Seconds before it may dock.
constexpr double storeDelay = 0.5;
constexpr int spaceKey = 49;

QString frameKey()
{
    return QStringLiteral("ShelfPanelFrame");
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
    , m_motion(window, queue)
    , m_docking(window, m_motion, screens, pointer, queue)
{
    m_window.setFrame(QRectF(m_window.frame().topLeft(), defaultSize));
    m_window.setFrame(QRectF(topRightOrigin(), defaultSize));
    restoreFrame();
    connectWindow();
    connectDocking();
}

void ShelfPanel::connectWindow()
{
    m_rowDrag.beginPress = [this] {
        if (beginPress)
            beginPress();
    };
    m_rowDrag.dragURLs = [this] { return dragURLs ? dragURLs() : std::nullopt; };
    m_rowDrag.onBegan = [this] {
        if (onDragBegan)
            onDragBegan();
    };
    m_rowDrag.onDraggedOut = [this](const QList<Address> &urls) {
        if (onDraggedOut)
            onDraggedOut(urls);
    };
    m_window.onButton = [this](WindowButtonEvent event, const QPointF &location) {
        return m_rowDrag.routeRowDrag(event, location);
    };
    m_window.onKey = [this](const KeyEvent &event) { return routeKey(event); };
    m_window.onClose = [this] { hide(); };
    m_window.onUserFrame = [this] { storeFrameSoon(); };
}

void ShelfPanel::connectDocking()
{
    m_docking.canDock = [this] { return canDock && canDock(); };
    m_docking.hasModal = [this] { return hasModal && hasModal(); };
    m_docking.isPreviewVisible = [this] { return isPreviewVisible && isPreviewVisible(); };
    m_docking.onMoved = [this] { storeFrameSoon(); };
    m_docking.onWillShow = [this] {
        if (onWillShow)
            onWillShow();
    };
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
    return m_screens.showing(frame) ? frame.topLeft() : topRightOrigin();
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
    if (m_docking.isDocked()) {
        const auto screen = activeScreen();
        if (!screen || m_docking.home()->intersects(screen->frame)) {
            m_docking.undock(summonHold);
            return;
        }
        hide(); // It is wanted on the pointer's screen.
    }
    if (onWillShow)
        onWillShow();
    m_docking.hold(summonHold);
    m_docking.startTimer();
    moveTo(originFor(positionMode));
    if (m_motion.isShown())
        m_window.orderFront();
    else
        m_motion.appear({ 0, -slideDistance }, showDuration);
}

void ShelfPanel::summonWithFocus()
{
    summon();
    m_window.focus();
}

void ShelfPanel::hide()
{
    m_docking.stopTimer();
    if (m_docking.isDocked())
        m_docking.drop();
    else if (m_motion.isShown())
        m_motion.leave({}, hideDuration);
    if (onWillHide)
        onWillHide();
}

void ShelfPanel::setTextScale(double scale)
{
    if (scale == m_textScale)
        return;
    const QSizeF smallest = PanelWindow::smallestSize * scale;
    const QRectF frame = m_window.frame();
    const bool isChosen = frame.size().toSize() != (defaultSize * m_textScale).toSize();
    m_textScale = scale;
    const QSizeF size = isChosen ? frame.size().expandedTo(smallest) : defaultSize * scale;
    m_window.setSmallestSize(smallest);
    // It grows to where there is room: it mostly stands at the right.
    m_window.setFrame(QRectF(QPointF(frame.right() - size.width(), frame.top()), size));
    storeFrameSoon();
}

void ShelfPanel::moveTo(const QPointF &origin)
{
    m_window.setFrame(QRectF(origin, m_window.frame().size()));
    storeFrameSoon();
}

/// Over the place that was just set. A size that no longer fits is cut, and a
/// place that no screen shows any more is left for the top right.
void ShelfPanel::restoreFrame()
{
    const auto stored = storedFrame(m_preferences.value(frameKey()));
    if (!stored)
        return;
    const auto shown = m_screens.showing(*stored);
    const auto screen = shown ? shown : activeScreen();
    QSizeF size = stored->size();
    if (screen)
        size = size.boundedTo(screen->visibleFrame.size());
    size = size.expandedTo(PanelWindow::smallestSize);
    m_window.setFrame(QRectF(stored->topLeft(), size));
    m_window.setFrame(QRectF(
        shown ? reachableOrigin(m_window.frame(), shown->visibleFrame) : topRightOrigin(), size));
}

/// Once it rests: while a user drags it, it has another frame with every move.
void ShelfPanel::storeFrameSoon()
{
    m_pendingStore = m_queue.after(storeDelay, [this] { storeFrame(); });
}

void ShelfPanel::storeFrame()
{
    const QRectF frame = m_window.frame();
    m_preferences.setValue(frameKey(),
                           QJsonArray { frame.x(), frame.y(), frame.width(), frame.height() });
}

/// With Command the key commands come first, because a space then is no space;
/// without it the preview's space comes before them. Each key is offered to
/// onKey once at most. A question that stands gets them all.
bool ShelfPanel::routeKey(const KeyEvent &event)
{
    if (hasModal && hasModal())
        return false;
    const bool command = (event.modifiers & EventModifier::Command) != 0;
    if (command && onKey && onKey(event))
        return true;
    if (event.keyCode == spaceKey && !m_ql.urls.isEmpty() && onPreview && onPreview())
        return true;
    return !command && onKey && onKey(event);
}
