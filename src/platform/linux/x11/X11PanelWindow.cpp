#include "platform/linux/x11/X11PanelWindow.h"

#include "platform/linux/x11/RoundedRegion.h"
#include "platform/linux/x11/X11Root.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

#include <array>

namespace {

constexpr int cornerRadius = 12;
constexpr int borderWidth = 1;
constexpr double borderOpacity = 0.22; // Of the text's colour: seen on light and on dark.
constexpr double settleTime = 0.5; // Seconds.
constexpr quint32 allDesktops = 0xffffffff;

}

X11PanelWindow::X11PanelWindow(MainQueue &queue)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_queue(queue)
    , m_connection(Xcb::toolkitConnection())
    , m_root(X11Root::of(m_connection, createNative()))
    , m_atoms(m_connection)
    , m_compositor(m_connection, m_root)
    , m_activation(*this, m_connection, m_root, queue)
    , m_grip(*this, queue)
    , m_keys(*this)
{
    m_atoms.fetch({ "_NET_WM_STATE", "_NET_WM_STATE_ABOVE", "_NET_WM_STATE_STICKY",
                    "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER", "_NET_WM_DESKTOP",
                    "_MOTIF_WM_HINTS" });
    m_compositor.onChange = [this] {
        applyShape();
        update();
    };
    m_keys.onKey = [this](const KeyEvent &event) { return onKey && onKey(event); };
    windowHandle()->installEventFilter(this);
    applyShape();
}

X11PanelWindow::~X11PanelWindow()
{
    // It stays its owner's.
    if (m_rootView)
        m_rootView->setParent(nullptr);
}

/// A window of 32 bits in any case: a compositor may come later.
xcb_window_t X11PanelWindow::createNative()
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_AlwaysShowToolTips); // It seldom has the keyboard.
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QStringLiteral("Vantle"));
    setWindowRole(QStringLiteral("panel"));
    setMinimumSize(smallestSize.toSize());
    return static_cast<xcb_window_t>(winId());
}

void X11PanelWindow::setRootView(QWidget *view)
{
    m_rootView = view;
    view->setParent(this);
    layoutRootView();
    // Else it is shown, laid out and given its fonts together with the panel.
    if (isVisible())
        view->show();
}

QRectF X11PanelWindow::frame() const
{
    return geometry();
}

void X11PanelWindow::setFrame(const QRectF &frame)
{
    m_grip.release();
    m_settledAt = m_queue.uptime() + settleTime;
    setGeometry(frame.toRect());
    m_knownGeometry = geometry();
}

void X11PanelWindow::orderFront()
{
    m_settledAt = m_queue.uptime() + settleTime;
    if (!isVisible()) {
        writeHints();
        show();
        askForPlace();
    }
    raise();
}

void X11PanelWindow::orderOut()
{
    m_activation.cancel();
    m_grip.release();
    QWidget::hide();
}

void X11PanelWindow::focus()
{
    m_activation.request();
}

bool X11PanelWindow::canFade() const
{
    return m_compositor.isRunning();
}

void X11PanelWindow::setOpacity(double opacity)
{
    setWindowOpacity(canFade() ? opacity : 1);
    xcb_flush(m_connection); // The toolkit waits for something to paint.
}

void X11PanelWindow::setSlide(const QPointF &offset)
{
    if (offset == m_slide)
        return;
    m_slide = offset;
    layoutRootView();
    update();
}

void X11PanelWindow::performDrag()
{
    m_grip.move();
}

/// What the window manager reads when it maps the window. It forgets the states
/// when the window goes, so they are written for every show; the toolkit adds
/// "above" to them, and a user time of 0, by which nobody asks for the keyboard.
/// A window that cannot be maximised is not tiled either when it is moved to an
/// edge of the screen.
void X11PanelWindow::writeHints()
{
    const std::array states { m_atoms("_NET_WM_STATE_STICKY"),
                              m_atoms("_NET_WM_STATE_SKIP_TASKBAR"),
                              m_atoms("_NET_WM_STATE_SKIP_PAGER") };
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, native(), m_atoms("_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, states.size(), states.data());
    // Flags (functions and decorations count), functions (resize, move, close),
    // decorations, input mode, status.
    const std::array<quint32, 5> motifHints { 1 | 2, 2 | 4 | 32, 0, 0, 0 };
    const xcb_atom_t name = m_atoms("_MOTIF_WM_HINTS");
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, native(), name, name, 32,
                        motifHints.size(), motifHints.data());
}

/// What has to be asked for after mapping. The desktop, because by a property
/// before that xfwm4 puts the window on one that does not exist. The states once
/// more, because a window manager that is still busy with the last hide takes
/// away what was written for this show.
void X11PanelWindow::askForPlace()
{
    const quint32 add = 1;
    const quint32 application = 1; // The source of the request.
    X11Root::send(m_connection, m_root, native(), m_atoms("_NET_WM_DESKTOP"),
                  { allDesktops, application });
    X11Root::send(
        m_connection, m_root, native(), m_atoms("_NET_WM_STATE"),
        { add, m_atoms("_NET_WM_STATE_ABOVE"), m_atoms("_NET_WM_STATE_STICKY"), application });
    X11Root::send(m_connection, m_root, native(), m_atoms("_NET_WM_STATE"),
                  { add, m_atoms("_NET_WM_STATE_SKIP_TASKBAR"), m_atoms("_NET_WM_STATE_SKIP_PAGER"),
                    application });
}

/// Without a compositor what is translucent would be black: the corners are cut.
void X11PanelWindow::applyShape()
{
    if (canFade())
        clearMask();
    else
        setMask(roundedRegion(rect(), cornerRadius));
}

/// Inside the border, and cut to its corners, which a view's own background
/// would paint over.
void X11PanelWindow::layoutRootView()
{
    if (!m_rootView)
        return;
    const QRect inner = rect().adjusted(borderWidth, borderWidth, -borderWidth, -borderWidth);
    m_rootView->setGeometry(inner.translated(m_slide.toPoint()));
    m_rootView->setMask(roundedRegion(m_rootView->rect(), cornerRadius - borderWidth));
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
    applyShape();
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

bool X11PanelWindow::eventFilter(QObject *object, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        if (object == windowHandle())
            return filterMouse(static_cast<const QMouseEvent &>(*event));
        break;
    default:
        break;
    }
    return QWidget::eventFilter(object, event);
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
    m_activation.handleEvent(*static_cast<const xcb_generic_event_t *>(message));
    return QWidget::nativeEvent(type, message, result);
}

void X11PanelWindow::closeEvent(QCloseEvent *event)
{
    event->ignore(); // The window stays, out of sight.
    if (onClose)
        onClose();
}
