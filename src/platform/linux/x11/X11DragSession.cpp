#include "platform/linux/x11/X11DragSession.h"

#include "base/FilePath.h"
#include "base/MainQueue.h"
#include "platform/linux/DragFormats.h"
#include "platform/linux/x11/X11Root.h"

#include <QBitmap>
#include <QCoreApplication>
#include <QDrag>
#include <QMimeData>
#include <QPainter>
#include <QPixmap>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {

constexpr double finishLimit = 10; // Seconds for a target to say whether it took the drop.
constexpr quint32 versionWithAnswer = 5; // Older ones say that they are done, but not how.

/// Names for the toolkit to announce; what stands behind them is answered by the
/// offer. With no more than three names, targets would be told in the message
/// itself, where they cannot be corrected any more.
class AnnouncedTypes final : public QMimeData
{
public:
    QStringList formats() const override
    {
        return { QStringLiteral("text/uri-list"), QStringLiteral("application/x-vantle-drag") };
    }
    bool hasFormat(const QString &type) const override { return formats().contains(type); }
};

struct Picture
{
    QPixmap pixmap;
    QPoint hotSpot;
};

/// The icons as they fan out, the first on top.
Picture picture(const QList<DraggingItem> &items, const QPointF &at, qreal ratio)
{
    QRectF bounds;
    for (const DraggingItem &item : items) {
        if (!item.icon.isNull())
            bounds |= item.frame;
    }
    if (bounds.isEmpty())
        return {};
    QPixmap pixmap((bounds.size() * ratio).toSize());
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    for (auto i = items.size(); i-- > 0;) {
        const DraggingItem &item = items.at(i);
        if (!item.icon.isNull())
            item.icon.paint(&painter, item.frame.translated(-bounds.topLeft()).toRect());
    }
    return { pixmap, (at - bounds.topLeft()).toPoint() };
}

QRegion shapeOf(const QPixmap &pixmap)
{
    if (pixmap.isNull())
        return {};
    return pixmap.scaled(pixmap.deviceIndependentSize().toSize()).mask();
}

QList<QUrl> urlsOf(const QList<DraggingItem> &items)
{
    QList<QUrl> urls;
    for (const DraggingItem &item : items)
        urls.append(item.url);
    return urls;
}

/// The paths of a drag that holds nothing but files.
QByteArrayList portalPaths(const QList<QUrl> &urls)
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

X11DragSession::X11DragSession(QWidget &window, MainQueue &queue, Workers &workers)
    : m_window(&window)
    , m_queue(queue)
    , m_workers(workers)
    , m_connection(Xcb::toolkitConnection())
    , m_atoms(m_connection)
    , m_compositor(m_connection,
                   X11Root::of(m_connection, static_cast<xcb_window_t>(window.winId())))
{
    m_atoms.fetch({ "XdndSelection", "XdndStatus", "XdndFinished", "XdndTypeList", "XdndAware" });
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
    if (m_state == State::Starting || m_state == State::Dragging)
        return onEnd(false);
    end(false); // A drop before this one that was never answered.
    const auto urls = urlsOf(items);
    m_offer = std::make_unique<DragOffer>(
        m_queue, m_workers, m_atoms, DragFormats::formatsFor(urls),
        m_portal.isAvailable() ? portalPaths(urls) : QByteArrayList());
    m_onEnd = std::move(onEnd);
    m_target = Xcb::none;
    m_taken.reset();
    m_state = State::Starting;

    // Deletes itself when its target is done with it.
    const QPointer<QDrag> drag = new QDrag(&source);
    auto *data = new AnnouncedTypes;
    data->setUrls(urls); // For windows of ours, which ask nobody else.
    drag->setMimeData(data);
    const auto [pixmap, hotSpot] = picture(items, at, source.devicePixelRatioF());
    drag->setPixmap(pixmap);
    drag->setHotSpot(hotSpot);
    m_shape = shapeOf(pixmap);
    m_windowsBefore = QGuiApplication::allWindows();
    const std::weak_ptr alive(m_alive);
    const Qt::DropAction action = drag->exec(Qt::CopyAction);
    if (!alive.lock())
        return;
    m_state = State::Dropped;
    if (action == Qt::IgnoreAction)
        end(false);
    else if (m_taken)
        end(*m_taken);
    else if (drag && drag->target()) // A window of ours, which has the drop already.
        end(true);
    else
        m_limit = m_queue.after(finishLimit, [this] { end(false); });
}

bool X11DragSession::nativeEventFilter(const QByteArray &type, void *message, qintptr *)
{
    if (!m_offer || type != "xcb_generic_event_t")
        return false;
    if (m_state == State::Starting) {
        m_state = State::Dragging;
        announceTypes();
        shapePicture();
    }
    switch (static_cast<xcb_generic_event_t *>(message)->response_type & 0x7f) {
    case XCB_SELECTION_REQUEST:
        return answerRequest(*static_cast<xcb_selection_request_event_t *>(message));
    case XCB_CLIENT_MESSAGE:
        handleMessage(*static_cast<xcb_client_message_event_t *>(message));
        break;
    case XCB_PROPERTY_NOTIFY:
        if (const auto *notify = static_cast<xcb_property_notify_event_t *>(message);
            notify->state == XCB_PROPERTY_DELETE)
            m_offer->fetched(notify->window, notify->atom);
        break;
    default:
        break;
    }
    return false;
}

bool X11DragSession::answerRequest(const xcb_selection_request_event_t &request)
{
    if (request.selection != m_atoms("XdndSelection"))
        return false;
    m_offer->answer(request);
    return true;
}

/// The toolkit announces text beside every list of addresses, which targets would
/// prefer to the files. Its list is corrected before the first event of the drag
/// reaches it, and so before the first target hears of the drag.
void X11DragSession::announceTypes()
{
    const xcb_window_t owner = Xcb::selectionOwner(m_connection, m_atoms("XdndSelection"));
    if (!Xcb::isOwn(m_connection, owner))
        return;
    const auto types = m_offer->types();
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, owner, m_atoms("XdndTypeList"),
                        XCB_ATOM_ATOM, 32, static_cast<quint32>(types.size()), types.constData());
    xcb_flush(m_connection);
}

/// Without a compositing manager the toolkit shows the picture on a plain
/// rectangle: the shape it means to give that window has no effect.
void X11DragSession::shapePicture()
{
    const auto windows = QGuiApplication::allWindows();
    for (QWindow *window : windows) {
        if (!m_windowsBefore.contains(window) && !m_compositor.isRunning())
            window->setMask(m_shape);
    }
    m_windowsBefore.clear();
}

void X11DragSession::handleMessage(const xcb_client_message_event_t &message)
{
    if (m_state == State::Idle || message.format != 32)
        return;
    const quint32 *data = message.data.data32;
    if (message.type == m_atoms("XdndStatus") && m_state == State::Dragging) {
        m_target = data[0];
    } else if (message.type == m_atoms("XdndFinished") && data[0] == m_target) {
        m_taken = isTaken(data);
        if (m_state == State::Dropped)
            end(*m_taken);
    }
}

bool X11DragSession::isTaken(const quint32 *data)
{
    if (data[1] & 1)
        return true;
    const auto version
        = Xcb::property32(m_connection, data[0], m_atoms("XdndAware"), XCB_ATOM_ATOM, 1);
    return !version.isEmpty() && version.first() < versionWithAnswer;
}

void X11DragSession::end(bool accepted)
{
    m_state = State::Idle;
    m_limit.reset();
    if (const auto onEnd = std::exchange(m_onEnd, nullptr))
        onEnd(accepted);
}
