#include "platform/linux/x11/X11DragSession.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "platform/linux/transfer/DragFormats.h"
#include "platform/linux/x11/DragPicture.h"
#include "platform/linux/x11/NativeGeometry.h"
#include "platform/linux/x11/X11Root.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <utility>

namespace {

xcb_window_t nativeWindow(const QWidget &widget)
{
    return static_cast<xcb_window_t>(widget.window()->winId());
}

QPoint native(const QPointF &at)
{
    return NativeGeometry::toNative(at, NativeGeometry::screenScales()).toPoint();
}

/// The paths of a drag that holds nothing but files.
QByteArrayList portalPaths(const QList<Address> &urls)
{
    QByteArrayList paths;
    for (const QUrl &url : urls) {
        if (!url.isLocalFile())
            return {};
        paths.append(FilePath::fromUrl(url));
    }
    return paths;
}

}

X11DragSession::X11DragSession(QWidget &window, MainQueue &queue, Workers &workers,
                               QByteArray textFolder)
    : m_window(&window)
    , m_queue(queue)
    , m_textFolder(std::move(textFolder))
    , m_connection(Xcb::toolkitConnection())
    , m_root(X11Root::ofToolkit(m_connection))
    , m_atoms(m_connection)
    , m_offer(queue, workers, m_atoms)
    , m_compositor(m_connection, m_root, X11ManagerSelection::compositing)
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

X11DragSession::~X11DragSession() = default;

void X11DragSession::begin(const QList<DraggingItem> &items, const QPointF &at,
                           std::function<void(bool)> onEnd)
{
    if (!m_window)
        return onEnd(false);
    beginFrom(*m_window, items, at, std::move(onEnd));
}

void X11DragSession::beginFrom(QWidget &source, const QList<DraggingItem> &items, const QPointF &at,
                               std::function<void(bool)> onEnd)
{
    if (m_drag)
        m_drag->cancel(); // A drop before this one that was never answered.
    letPointerGo();
    QList<Address> urls;
    for (const DraggingItem &item : items)
        urls.append(item.url);

    using Backdrop = DragPicture::Backdrop;
    m_picture = std::make_unique<DragPicture>(items, at, source.devicePixelRatioF(),
                                              m_compositor.isThere() ? Backdrop::Translucent
                                                                     : Backdrop::Opaque);
    m_picture->follow(source.mapToGlobal(at));
    m_picture->show();
    if (!m_picture->setMouseGrabEnabled(true)) {
        m_picture.reset();
        return onEnd(false);
    }
    m_source = &source;
    m_offer.set(nativeWindow(source), DragFormats::formatsFor(urls, m_textFolder),
                m_portal.isAvailable() ? portalPaths(urls) : QByteArrayList());
    XdndSource::Offer offer { nativeWindow(source),
                              m_offer.types(),
                              { m_atoms("XdndActionCopy") } };
    // Copies alone, but file managers make a file of a link only where they may link.
    if (std::ranges::none_of(urls, &QUrl::isLocalFile))
        offer.actions.append(m_atoms("XdndActionLink"));
    if (m_window && source.window() != m_window->window())
        offer.ownTarget = nativeWindow(*m_window);
    m_drag = std::make_unique<XdndSource>(m_queue, m_atoms, m_root, std::move(offer));
    m_drag->onAction = [this](xcb_atom_t action) { showAction(action); };
    m_drag->onEnd = std::move(onEnd);
    showAction(Xcb::none);
    // The toolkit may have read moves, and the release, before the grab.
    QCoreApplication::instance()->installEventFilter(this);
}

bool X11DragSession::eventFilter(QObject *object, QEvent *event)
{
    if (!m_picture)
        return false;
    switch (event->type()) {
    case QEvent::MouseMove: {
        const auto &move = static_cast<QMouseEvent &>(*event);
        m_picture->follow(move.globalPosition());
        m_drag->move(native(move.globalPosition()), static_cast<xcb_timestamp_t>(move.timestamp()));
        return true;
    }
    case QEvent::MouseButtonRelease:
        return pointerReleased(object, static_cast<QMouseEvent &>(*event));
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent *>(event)->key() != Qt::Key_Escape)
            return false;
        event->accept(); // No shortcut's: then it comes as a press, which no window gets either.
        if (event->type() == QEvent::ShortcutOverride)
            return true;
        letPointerGo();
        m_drag->cancel();
        return true;
    default:
        return false;
    }
}

/// The window that got the press gets the release as well, or it would wait for it.
bool X11DragSession::pointerReleased(QObject *receiver, const QMouseEvent &event)
{
    if (event.button() != Qt::LeftButton)
        return true;
    const QPointF at = event.globalPosition();
    letPointerGo();
    auto *window = m_source ? m_source->window()->windowHandle() : nullptr;
    if (window && receiver != window)
        QCoreApplication::postEvent(window,
                                    new QMouseEvent(QEvent::MouseButtonRelease,
                                                    window->mapFromGlobal(at), at, Qt::LeftButton,
                                                    event.buttons(), event.modifiers()));
    m_drag->release(native(at), static_cast<xcb_timestamp_t>(event.timestamp()));
    return receiver != window;
}

void X11DragSession::letPointerGo()
{
    QCoreApplication::instance()->removeEventFilter(this);
    if (!m_picture)
        return;
    m_picture->setMouseGrabEnabled(false);
    m_picture->hide();
    m_picture.release()->deleteLater(); // It may be handling the event.
}

void X11DragSession::showAction(xcb_atom_t action)
{
    if (m_picture)
        m_picture->setCursor(action == Xcb::none                       ? Qt::ForbiddenCursor
                                 : action == m_atoms("XdndActionLink") ? Qt::DragLinkCursor
                                                                       : Qt::DragCopyCursor);
}

bool X11DragSession::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if (m_drag && (event->response_type & 0x7f) == XCB_CLIENT_MESSAGE)
        m_drag->handleMessage(*static_cast<const xcb_client_message_event_t *>(message));
    return false;
}
