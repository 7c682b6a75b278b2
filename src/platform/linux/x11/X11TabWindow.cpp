#include "platform/linux/x11/X11TabWindow.h"

#include "platform/linux/x11/RoundedRegion.h"
#include "platform/linux/x11/X11Root.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>

#include <utility>

X11TabWindow::X11TabWindow(MainQueue &queue)
    : QWidget(nullptr,
              Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint
                  | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus)
    , m_queue(queue)
    , m_connection(Xcb::toolkitConnection())
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    setMouseTracking(true);
    setWindowTitle(QStringLiteral("Vantle Tab"));
    setWindowRole(QStringLiteral("tab"));
}

X11TabWindow::~X11TabWindow()
{
    // It stays its owner's.
    if (m_rootView)
        m_rootView->setParent(nullptr);
}

/// A window of 32 bits in any case: a compositor may come later.
void X11TabWindow::createNative()
{
    m_compositor.emplace(m_connection,
                         X11Root::of(m_connection, static_cast<xcb_window_t>(winId())));
    m_compositor->onChange = [this] {
        applyShape();
        update();
    };
    m_drags.emplace(m_queue);
    m_drags->attach(winId());
    m_drags->onTargeted = [this](bool targeted) {
        if (targeted && onDragEntered)
            onDragEntered();
    };
}

void X11TabWindow::setRootView(QWidget *view)
{
    m_rootView = view;
    view->setAttribute(Qt::WA_TransparentForMouseEvents);
    view->setParent(this);
    view->setGeometry(rect());
}

void X11TabWindow::place(const QRectF &frame, DockEdge edge)
{
    if (!m_compositor)
        createNative();
    m_edge = edge;
    setGeometry(frame.toRect());
    applyShape();
}

void X11TabWindow::orderFront()
{
    show();
    raise();
}

void X11TabWindow::orderOut()
{
    QWidget::hide();
    m_pointerInside = false;
}

void X11TabWindow::setOpacity(double opacity)
{
    setWindowOpacity(canFade() ? opacity : 1);
    xcb_flush(m_connection); // The toolkit waits for something to paint.
}

/// Without a compositor what is translucent would be black: the corners are cut,
/// but for those that lie against the edge.
void X11TabWindow::applyShape()
{
    if (canFade()) {
        clearMask();
        return;
    }
    const bool isRight = m_edge == DockEdge::Right;
    const QRect beyond = rect().adjusted(isRight ? 0 : -cornerRadius, 0, //
                                         isRight ? cornerRadius : 0, 0);
    setMask(roundedRegion(beyond, cornerRadius) & rect());
}

void X11TabWindow::paintEvent(QPaintEvent *)
{
    if (!canFade())
        QPainter(this).fillRect(rect(), palette().window());
}

void X11TabWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_rootView)
        m_rootView->setGeometry(rect());
    applyShape();
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
