#include "platform/linux/x11/XdndTarget.h"

#include "base/MainQueue.h"
#include "platform/linux/transfer/DropFormats.h"

#include <QCoreApplication>

namespace {

constexpr quint32 newestVersion = 5;
constexpr quint32 oldestVersion = 3;
constexpr quint32 mostTypes = 256; // Of one source. Real ones offer some twenty.
constexpr double dropLimit = 30; // Seconds for all of a drop.

}

XdndTarget::XdndTarget(MainQueue &queue)
    : m_queue(queue)
    , m_connection(Xcb::toolkitConnection())
    , m_atoms(m_connection)
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

XdndTarget::~XdndTarget()
{
    onLandingEnded = nullptr;
    while (!m_drops.empty()) {
        const auto reading = m_drops.front().reading;
        reading->giveUp();
        endDrop(m_drops.begin(), DropReading::Gain::Nothing);
        reading->waitForEnd(std::chrono::milliseconds(500));
    }
}

void XdndTarget::attach(WId window)
{
    endHover();
    m_window = static_cast<xcb_window_t>(window);
    Xcb::setProperty(m_connection, m_window, m_atoms("XdndAware"), XCB_ATOM_ATOM,
                     { newestVersion });
}

bool XdndTarget::nativeEventFilter(const QByteArray &type, void *message, qintptr *)
{
    if (type != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<xcb_generic_event_t *>(message);
    const auto code = event->response_type & 0x7f;
    if (code == XCB_CLIENT_MESSAGE)
        return handleMessage(*static_cast<xcb_client_message_event_t *>(message));
    if (code == XCB_DESTROY_NOTIFY)
        sourceGone(static_cast<xcb_destroy_notify_event_t *>(message)->window);
    return false;
}

/// Whether the message was one of a drag over the window: then the toolkit does not get it.
bool XdndTarget::handleMessage(const xcb_client_message_event_t &message)
{
    if (message.window != m_window || message.format != 32)
        return false;
    const quint32 *data = message.data.data32;
    if (message.type == m_atoms("XdndPosition"))
        position(data);
    else if (message.type == m_atoms("XdndEnter"))
        enter(data);
    else if (message.type == m_atoms("XdndDrop"))
        drop(data);
    else if (message.type != m_atoms("XdndLeave"))
        return false;
    else if (isOver(data[0]))
        endHover();
    return true;
}

void XdndTarget::enter(const quint32 *data)
{
    endHover(); // Of a source that went without a word.
    const quint32 version = data[1] >> 24;
    if (version < oldestVersion || version > newestVersion)
        return;
    // The X server tells when the source goes.
    if (!Xcb::isOwn(m_connection, data[0])
        && !Xcb::listenTo(m_connection, data[0], XCB_EVENT_MASK_STRUCTURE_NOTIFY))
        return;
    m_hover = Hover { data[0], offeredTypes(data) };
    // Promised files too: their user learns only by the drop that nothing comes of it.
    m_hover->isWanted
        = DropFormats::canHold(m_hover->types) || DropFormats::promisesFiles(m_hover->types);
}

QStringList XdndTarget::offeredTypes(const quint32 *data)
{
    QList<xcb_atom_t> atoms;
    if (data[1] & 1) // More than fit into the message.
        atoms = Xcb::property32(m_connection, data[0], m_atoms("XdndTypeList"), XCB_ATOM_ATOM,
                                mostTypes);
    else
        atoms = { data[2], data[3], data[4] };
    atoms.removeAll(Xcb::none);
    return m_atoms.names(atoms);
}

void XdndTarget::position(const quint32 *data)
{
    const bool known = isOver(data[0]);
    if (known && m_hover->isWanted && m_hover->requested != data[4]) {
        m_hover->requested = data[4];
        m_hover->action = chosenAction(data[4]);
    }
    if (known && mayTake && !mayTake())
        m_hover->requested = m_hover->action = Xcb::none; // Chosen anew at the next move.
    const xcb_atom_t action = known ? m_hover->action : Xcb::none;
    constexpr quint32 accept = 1;
    constexpr quint32 tellEveryMove = 2;
    const quint32 flags = (action ? accept : 0) | tellEveryMove;
    Xcb::sendMessage(m_connection, data[0], m_atoms("XdndStatus"),
                     { m_window, flags, 0, 0, action }, data[0]);
    if (known)
        setTargeted(action != Xcb::none);
}

/// Copy wherever the source lets us, else a link; never Move, after which a source
/// deletes what it gave. What it offers besides the action it asks for stands in
/// a list on its window, which may change with the modifier keys.
xcb_atom_t XdndTarget::chosenAction(xcb_atom_t requested)
{
    const xcb_atom_t copy = m_atoms("XdndActionCopy");
    const xcb_atom_t move = m_atoms("XdndActionMove");
    const xcb_atom_t link = m_atoms("XdndActionLink");
    if (requested == copy)
        return copy;
    const auto others = Xcb::property32(m_connection, m_hover->source, m_atoms("XdndActionList"),
                                        XCB_ATOM_ATOM, mostTypes);
    if (others.contains(copy))
        return copy;
    if (requested == link || others.contains(link))
        return link;
    const bool onlyMove = requested == move || others.contains(move);
    return onlyMove ? Xcb::none : copy;
}

void XdndTarget::drop(const quint32 *data)
{
    if (!isOver(data[0]) || m_hover->action == Xcb::none || !onDrop) {
        Xcb::sendMessage(m_connection, data[0], m_atoms("XdndFinished"), { m_window, 0, 0 },
                         data[0]);
        endHover();
        return;
    }
    startReading(data[2]);
    endHover();
}

void XdndTarget::startReading(quint32 time)
{
    const auto drop
        = m_drops.insert(m_drops.end(), { m_hover->source, m_window, m_hover->action, {}, {} });
    drop->reading = std::make_shared<DropReading>(
        m_queue, DropReading::Drop { m_hover->types, time }, dropLimit,
        DropReading::Listener { [this](const ItemProviders &objects) {
                                   if (onDrop)
                                       onDrop(objects);
                               },
                                [this, drop](DropReading::Gain gain) { endDrop(drop, gain); } });
    drop->deadline = m_queue.after(dropLimit, [this, drop] {
        drop->reading->giveUp();
        endDrop(drop, DropReading::Gain::Nothing);
    });
    drop->reading->start();
}

void XdndTarget::endDrop(std::list<Drop>::iterator drop, DropReading::Gain gain)
{
    const Drop ended = *drop;
    m_drops.erase(drop);
    if (ended.source != Xcb::none) {
        const bool taken = gain == DropReading::Gain::Something;
        Xcb::sendMessage(m_connection, ended.source, m_atoms("XdndFinished"),
                         { ended.window, taken, taken ? ended.action : Xcb::none }, ended.source);
    }
    landed();
}

void XdndTarget::sourceGone(xcb_window_t source)
{
    if (source == Xcb::none)
        return;
    for (Drop &drop : m_drops) {
        if (drop.source == source)
            drop.source = Xcb::none; // Its reader learns it by itself.
    }
    if (isOver(source))
        endHover();
}

void XdndTarget::setTargeted(bool targeted)
{
    if (!m_hover || m_hover->isTargeted == targeted)
        return;
    m_hover->isTargeted = targeted;
    if (onTargeted)
        onTargeted(targeted);
    if (!targeted)
        landed();
}

void XdndTarget::endHover()
{
    setTargeted(false);
    m_hover.reset();
}

void XdndTarget::landed()
{
    if (!isLanding() && onLandingEnded)
        onLandingEnded();
}
