#include "platform/linux/x11/X11TabWindow.h"

#include "platform/linux/x11/RoundedRegion.h"
#include "platform/linux/x11/X11Root.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

#include <array>
#include <utility>

X11TabWindow::X11TabWindow(MainQueue &queue)
    : QWidget(nullptr,
              Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint
                  | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus)
    , m_connection(Xcb::toolkitConnection())
    , m_root(X11Root::ofToolkit(m_connection))
    , m_presence(*this, m_connection, m_root,
                 [this](const QRect &whole, double ratio) { return cut(whole, ratio); })
    , m_drags(queue)
{
    // A window of 32 bits in any case: a compositor may come later.
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setMouseTracking(true);
    setWindowTitle(QStringLiteral("Vantle Tab"));
    setWindowRole(QStringLiteral("tab"));
    setGeometry(QRect(QPoint(), TabWindow::size.toSize()));
    m_drags.onTargeted = [this](bool targeted) {
        if (targeted && onDragEntered)
            onDragEntered();
    };
    QTimer::singleShot(X11Presence::mapDelay, this, [this] { map(); });
}

/// Once, when the program has started.
void X11TabWindow::map()
{
    if (QWidget::isVisible())
        return;
    m_drags.attach(winId());
    m_presence.map();
}

void X11TabWindow::setRootView(QWidget *view)
{
    view->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_presence.setView(view);
    view->setGeometry(rect());
}

void X11TabWindow::place(const QRectF &frame, DockEdge edge)
{
    m_edge = edge;
    setGeometry(frame.toRect());
    m_presence.fit();
}

void X11TabWindow::orderFront()
{
    map();
    m_presence.show();
    raiseBelowLock();
}

void X11TabWindow::orderOut()
{
    m_presence.hide();
    m_pointerInside = false;
}

/// But for the corners that lie against the edge.
QRegion X11TabWindow::cut(const QRect &whole, double ratio) const
{
    const int radius = qRound(cornerRadius * ratio);
    const bool isRight = m_edge == DockEdge::Right;
    const QRect beyond = whole.adjusted(isRight ? 0 : -radius, 0, isRight ? radius : 0, 0);
    return roundedRegion(beyond, radius) & whole;
}

/// Screen locks are windows that no manager manages, as this one is.
void X11TabWindow::raiseBelowLock()
{
    const xcb_window_t lock = X11Root::lock(m_connection, m_root);
    if (lock == Xcb::none) {
        raise();
        return;
    }
    const std::array<uint32_t, 2> order { lock, XCB_STACK_MODE_BELOW };
    // It may have gone.
    Xcb::send(m_connection,
              xcb_configure_window_checked(m_connection, static_cast<xcb_window_t>(internalWinId()),
                                           XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                                           order.data()));
}

bool X11TabWindow::nativeEvent(const QByteArray &type, void *message, qintptr *result)
{
    m_presence.handleEvent(*static_cast<const xcb_generic_event_t *>(message));
    return QWidget::nativeEvent(type, message, result);
}

void X11TabWindow::paintEvent(QPaintEvent *)
{
    if (!canFade())
        QPainter(this).fillRect(rect(), palette().window());
}

void X11TabWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (QWidget *view = m_presence.view())
        view->setGeometry(rect());
    m_presence.fit();
}

/// The server reports a pointer that is inside as soon as the window is mapped;
/// the first motion is what tells that the user went there.
void X11TabWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() == Qt::NoButton && !std::exchange(m_pointerInside, true)
        && onPointerEntered)
        onPointerEntered();
}

void X11TabWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && onPressed)
        onPressed();
}

void X11TabWindow::leaveEvent(QEvent *)
{
    if (std::exchange(m_pointerInside, false) && onPointerLeft)
        onPointerLeft();
}

void X11TabWindow::closeEvent(QCloseEvent *event)
{
    event->ignore(); // The window stays, out of sight.
}
