#include "platform/linux/x11/X11PanelWindow.h"

#include "platform/linux/x11/RoundedRegion.h"
#include "platform/linux/x11/X11Root.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QWindow>

namespace {

constexpr int cornerRadius = 12;
constexpr int borderWidth = 1;
constexpr double borderOpacity = 0.22; // Of the text's colour: seen on light and on dark.
constexpr double settleTime = 0.5; // Seconds.
constexpr quint32 allDesktops = 0xffffffff;
// Of WM_HINTS: https://x.org/releases/X11R7.6/doc/xorg-docs/specs/ICCCM/icccm.html
constexpr quint32 wmHintsSize = 9;
constexpr quint32 inputHint = 1;
constexpr quint32 mostProtocols = 32;

}

X11PanelWindow::X11PanelWindow(MainQueue &queue)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_queue(queue)
    , m_connection(Xcb::toolkitConnection())
    , m_root(createNative())
    , m_atoms(m_connection)
    , m_presence(*this, m_connection, m_root,
                 [](const QRect &whole, double ratio) {
                     return roundedRegion(whole, qRound(cornerRadius * ratio));
                 })
    , m_activation(*this, m_connection, m_root, queue)
    , m_manager(m_connection, m_root, native())
    , m_grip(*this, queue)
    , m_keys(*this)
{
    m_manager.onManagerChanged = [this] {
        askForPlace();
        if (isVisible())
            moveToTop();
    };
    // A hidden one may still have the keyboard for a moment.
    m_keys.onKey
        = [this](const KeyEvent &event) { return !isVisible() || (onKey && onKey(event)); };
    windowHandle()->installEventFilter(this);
    QTimer::singleShot(X11Presence::mapDelay, this, [this] { map(); });
}

/// A window of 32 bits in any case: a compositor may come later. The root of its screen.
xcb_window_t X11PanelWindow::createNative()
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_AlwaysShowToolTips); // It seldom has the keyboard.
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QStringLiteral("Vantle"));
    setWindowRole(QStringLiteral("panel"));
    setMinimumSize(smallestSize.toSize());
    winId();
    return X11Root::ofToolkit(m_connection);
}

void X11PanelWindow::setRootView(QWidget *view)
{
    m_presence.setView(view);
    layoutRootView();
}

void X11PanelWindow::setFrame(const QRectF &frame)
{
    m_grip.release();
    m_settledAt = m_queue.uptime() + settleTime;
    setGeometry(frame.toRect());
    m_knownGeometry = geometry();
}

/// Once, when the program has started.
void X11PanelWindow::map()
{
    if (QWidget::isVisible())
        return;

    m_wmHints = Xcb::property32(m_connection, native(), m_atoms("WM_HINTS"), XCB_ATOM_WM_HINTS,
                                wmHintsSize);
    m_protocols = Xcb::property32(m_connection, native(), m_atoms("WM_PROTOCOLS"), XCB_ATOM_ATOM,
                                  mostProtocols);
    writeHints();
    acceptKeyboard(false);
    m_presence.map();

    askForPlace();
}

void X11PanelWindow::orderFront()
{
    m_settledAt = m_queue.uptime() + settleTime;
    const bool wasHidden = !isVisible();
    if (wasHidden) {
        map();
        m_presence.show();
        m_manager.beginFocusWatch();
    }
    acceptKeyboard(true);
    moveToTop();
    if (wasHidden && rootProperty("_NET_SHOWING_DESKTOP", XCB_ATOM_CARDINAL) != 0)
        m_activation.handOver(native()); // It is hidden with the others until it is active.
}

/// Above the others of its kind, too. xfwm4 gives a window that asks to be raised the keyboard,
/// and knows no other way than a change of state.
void X11PanelWindow::moveToTop()
{
    const quint32 application = 1;
    const quint32 pager = 2;
    for (const quint32 isAbove : { 0, 1 })
        X11Root::send(m_connection, m_root, native(), m_atoms("_NET_WM_STATE"),
                      { isAbove, m_atoms("_NET_WM_STATE_ABOVE"), Xcb::none, application });
    X11Root::send(m_connection, m_root, native(), m_atoms("_NET_RESTACK_WINDOW"),
                  { pager, Xcb::none, XCB_STACK_MODE_ABOVE });
    if (rootProperty("_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW) == Xcb::none)
        raise();
}

quint32 X11PanelWindow::rootProperty(const char *name, xcb_atom_t type)
{
    return Xcb::property32(m_connection, m_root, m_atoms(name), type, 1).value(0);
}

void X11PanelWindow::orderOut()
{
    m_activation.cancel();
    m_grip.release();
    if (!isVisible())
        return;
    m_presence.hide();
    acceptKeyboard(false);
    giveKeyboardBack();
    m_manager.endFocusWatch();
}

/// A hidden panel is still mapped, and a window manager that looks for somebody to give the
/// keyboard to would find it.
void X11PanelWindow::acceptKeyboard(bool accept)
{
    auto hints = m_wmHints;
    hints.resize(wmHintsSize);
    hints[0] |= inputHint;
    hints[1] = accept ? 1 : 0;
    Xcb::setProperty(m_connection, native(), m_atoms("WM_HINTS"), XCB_ATOM_WM_HINTS, hints);
    auto protocols = m_protocols;
    if (!accept)
        protocols.removeAll(m_atoms("WM_TAKE_FOCUS"));
    Xcb::setProperty(m_connection, native(), m_atoms("WM_PROTOCOLS"), XCB_ATOM_ATOM, protocols);
}

void X11PanelWindow::giveKeyboardBack()
{
    if (isActiveWindow())
        m_activation.handOver(m_manager.formerWindow());
}

/// The window manager may grant the keyboard after the panel has gone.
void X11PanelWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !isVisible())
        giveKeyboardBack();
}

void X11PanelWindow::setSlide(const QPointF &offset)
{
    if (offset == m_slide)
        return;
    m_slide = offset;
    layoutRootView();
    update();
}

/// What the window manager reads when it maps the window; the toolkit adds "above"
/// to the states, and a user time of 0, by which nobody asks for the keyboard.
/// A window that cannot be maximised is not tiled either when it is moved to an
/// edge of the screen.
void X11PanelWindow::writeHints()
{
    Xcb::setProperty(m_connection, native(), m_atoms("_NET_WM_STATE"), XCB_ATOM_ATOM,
                     { m_atoms("_NET_WM_STATE_STICKY"), m_atoms("_NET_WM_STATE_SKIP_TASKBAR"),
                       m_atoms("_NET_WM_STATE_SKIP_PAGER") });
    // Flags (functions and decorations count), functions (resize, move, close),
    // decorations, input mode, status.
    const xcb_atom_t name = m_atoms("_MOTIF_WM_HINTS");
    Xcb::setProperty(m_connection, native(), name, name, { 1 | 2, 2 | 4 | 32, 0, 0, 0 });
}

/// What has to be asked for after mapping: by a property before that xfwm4 puts the
/// window on a desktop that does not exist.
void X11PanelWindow::askForPlace()
{
    const quint32 application = 1; // The source of the request.
    X11Root::send(m_connection, m_root, native(), m_atoms("_NET_WM_DESKTOP"),
                  { allDesktops, application });
}

/// Inside the border, and cut to its corners, which a view's own background
/// would paint over.
void X11PanelWindow::layoutRootView()
{
    QWidget *view = m_presence.view();
    if (!view)
        return;
    const QRect inner = rect().adjusted(borderWidth, borderWidth, -borderWidth, -borderWidth);
    view->setGeometry(inner.translated(m_slide.toPoint()));
    view->setMask(roundedRegion(view->rect(), cornerRadius - borderWidth));
}

void X11PanelWindow::paintEvent(QPaintEvent *)
{
    QColor border = palette().color(QPalette::WindowText);
    border.setAlphaF(borderOpacity);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!canFade())
        painter.fillRect(rect(), palette().window());
    painter.setPen(QPen(border, borderWidth));
    painter.setBrush(palette().window());
    const double half = borderWidth / 2.0;
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half).translated(m_slide),
                            cornerRadius - half, cornerRadius - half);
}

void X11PanelWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutRootView();
    m_presence.fit();
    noteFrame();
}

void X11PanelWindow::moveEvent(QMoveEvent *event)
{
    QWidget::moveEvent(event);
    noteFrame();
}

/// Any change that was not asked for is the user's: window managers have their
/// own ways of moving windows, by keys as well. Soon after a frame was set, it is
/// the window manager's answer.
void X11PanelWindow::noteFrame()
{
    if (geometry() == m_knownGeometry)
        return;
    m_knownGeometry = geometry();
    const bool settling = m_queue.uptime() < m_settledAt && !m_grip.isHeld();
    if (isVisible() && !settling && onUserFrame)
        onUserFrame();
}

bool X11PanelWindow::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        return filterMouse(static_cast<const QMouseEvent &>(*event));
    default:
        return false;
    }
}

/// Sees the window's events before the toolkit hands them to its widgets.
bool X11PanelWindow::filterMouse(const QMouseEvent &event)
{
    if (m_grip.handle(event))
        return true;
    WindowButtonEvent kind = WindowButtonEvent::LeftDragged;
    if (event.type() == QEvent::MouseMove) {
        if (!event.buttons().testFlag(Qt::LeftButton))
            return false;
    } else {
        if (event.button() != Qt::LeftButton)
            return false;
        kind = event.type() == QEvent::MouseButtonRelease ? WindowButtonEvent::LeftUp
                                                          : WindowButtonEvent::LeftDown;
    }
    return onButton && onButton(kind, event.position());
}

bool X11PanelWindow::nativeEvent(const QByteArray &type, void *message, qintptr *result)
{
    m_presence.handleEvent(*static_cast<const xcb_generic_event_t *>(message));
    return QWidget::nativeEvent(type, message, result);
}

void X11PanelWindow::closeEvent(QCloseEvent *event)
{
    event->ignore(); // The window stays, out of sight.
    if (onClose)
        onClose();
}
