#include "platform/linux/x11/SelectionOffer.h"

#include "base/MainQueue.h"
#include "base/NativeFile.h"
#include "base/Workers.h"
#include "platform/linux/transfer/DropFormats.h"
#include "platform/linux/transfer/PortalFiles.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>

namespace {

// Below the largest request of every server, which is 256 KiB at least.
constexpr qsizetype pieceSize = 128 << 10;
constexpr double silenceLimit = 10; // Seconds for a target to fetch a piece.

xcb_atom_t propertyOf(const xcb_selection_request_event_t &request)
{
    return request.property ? request.property : request.target; // Old targets name none.
}

std::optional<QByteArray> contentOf(const QByteArray &path)
{
    const Descriptor opened = NativeFile::open(path);
    QFile file;
    if (!opened || !file.open(opened.number(), QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.read(DragFormats::contentCap + 1);
    if (bytes.isEmpty() || bytes.size() > DragFormats::contentCap)
        return std::nullopt;
    return bytes;
}

}

SelectionOffer::SelectionOffer(MainQueue &queue, Workers &workers, Xcb::Atoms &atoms)
    : m_queue(queue)
    , m_workers(workers)
    , m_atoms(atoms)
    , m_connection(Xcb::toolkitConnection())
{
    QCoreApplication::instance()->installNativeEventFilter(this);
}

void SelectionOffer::set(xcb_window_t owner, const QList<DragFormats::Format> &formats,
                         const QByteArrayList &portalPaths)
{
    clear();
    m_owner = owner;
    for (const auto &format : formats)
        m_formats.append({ m_atoms(format.type.toUtf8()), format.data, format.path });
    m_portalPaths = portalPaths;
    m_time = XCB_CURRENT_TIME;
    m_alive = std::make_shared<int>(0);
}

void SelectionOffer::clear()
{
    m_owner = Xcb::none;
    m_formats.clear();
    m_alive.reset();
}

QList<xcb_atom_t> SelectionOffer::types()
{
    QList<xcb_atom_t> types;
    for (const Known &format : m_formats)
        types.append(format.type);
    if (!m_portalPaths.isEmpty()) {
        types.append(m_atoms(DropFormats::portalTransfer));
        types.append(m_atoms(DropFormats::portalFiles));
    }
    return types;
}

bool SelectionOffer::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    const int type = static_cast<xcb_generic_event_t *>(message)->response_type & 0x7f;
    if (type == XCB_SELECTION_REQUEST && m_owner != Xcb::none) {
        const auto &request = *static_cast<xcb_selection_request_event_t *>(message);
        if (request.owner != m_owner)
            return false;
        answer(request);
        return true;
    }
    if (type == XCB_PROPERTY_NOTIFY) {
        const auto &notify = *static_cast<xcb_property_notify_event_t *>(message);
        if (notify.state == XCB_PROPERTY_DELETE)
            fetched({ notify.window, notify.atom });
    }
    return false;
}

void SelectionOffer::answer(const xcb_selection_request_event_t &request)
{
    const auto answered = [this, request](bool isGiven) {
        xcb_selection_notify_event_t event {};
        event.response_type = XCB_SELECTION_NOTIFY;
        event.time = request.time;
        event.requestor = request.requestor;
        event.selection = request.selection;
        event.target = request.target;
        event.property = isGiven ? propertyOf(request) : Xcb::none;
        Xcb::sendEvent(m_connection, request.requestor, event);
    };
    const Place place { request.requestor, propertyOf(request) };
    const bool isPortal = isPortalType(request.target) && !m_portalPaths.isEmpty();
    const QByteArray path = isPortal ? m_portalPaths.first() : contentPath(request.target);
    if (path.isEmpty())
        return answered(give(place, request.target, {}));
    // The portal gets to know the files only now, since a registration opens them to
    // whoever has the key. A key is good for one fetch.
    m_workers.runAt(
        path,
        [=, this, &queue = m_queue, paths = m_portalPaths, alive = std::weak_ptr(m_alive),
         target = request.target] {
            queue.post([=, this, got = isPortal ? PortalFiles::transfer(paths) : contentOf(path)] {
                if (alive.expired())
                    return;
                answered(isPortal ? got && giveData(place, target, *got + '\0')
                                  : give(place, target, got));
            });
        });
}

bool SelectionOffer::isPortalType(xcb_atom_t type)
{
    return type == m_atoms(DropFormats::portalTransfer)
        || type == m_atoms(DropFormats::portalFiles);
}

QByteArray SelectionOffer::contentPath(xcb_atom_t target)
{
    const bool isAny = target == m_atoms("MULTIPLE");
    const auto format = std::find_if(m_formats.begin(), m_formats.end(), [&](const Known &known) {
        return !known.path.isEmpty() && (isAny || known.type == target);
    });
    return format == m_formats.end() ? QByteArray() : format->path;
}

bool SelectionOffer::give(const Place &place, xcb_atom_t target,
                          const std::optional<QByteArray> &content)
{
    const auto giveList = [&](xcb_atom_t type, const QList<quint32> &list) {
        Xcb::setProperty(m_connection, place.requestor, place.property, type, list);
        return true;
    };
    const bool hasTime = m_time != XCB_CURRENT_TIME;
    if (target == m_atoms("TARGETS")) {
        auto list = QList { target, m_atoms("MULTIPLE") } + types();
        if (hasTime)
            list.append(m_atoms("TIMESTAMP"));
        return giveList(XCB_ATOM_ATOM, list);
    }
    if (target == m_atoms("MULTIPLE"))
        return giveMany(place, content);
    if (target == m_atoms("TIMESTAMP") && hasTime)
        return giveList(XCB_ATOM_INTEGER, { m_time });
    const auto format = std::find_if(m_formats.begin(), m_formats.end(),
                                     [&](const Known &known) { return known.type == target; });
    if (format == m_formats.end() || (!format->path.isEmpty() && !content))
        return false;
    return giveData(place, target, format->path.isEmpty() ? format->data : *content);
}

/// Clipboard managers fetch everything in one go: the property lists pairs of a
/// form and the property for it, and what is refused is struck out there.
bool SelectionOffer::giveMany(const Place &place, const std::optional<QByteArray> &content)
{
    constexpr quint32 limit = 256;
    const auto type = m_atoms("ATOM_PAIR");
    auto pairs = Xcb::property32(m_connection, place.requestor, place.property, type, limit);
    if (pairs.isEmpty())
        return false;
    for (qsizetype i = 0; i + 1 < pairs.size(); i += 2) {
        const bool isNested = pairs[i] == m_atoms("MULTIPLE") || pairs[i + 1] == place.property;
        if (isNested || !give({ place.requestor, pairs[i + 1] }, pairs[i], content))
            pairs[i + 1] = Xcb::none;
    }
    Xcb::setProperty(m_connection, place.requestor, place.property, type, pairs);
    return true;
}

bool SelectionOffer::giveData(const Place &place, xcb_atom_t type, const QByteArray &data)
{
    if (data.size() <= pieceSize) {
        setBytes(place, type, data.constData(), data.size());
        return true;
    }
    m_transfers.erase(place); // One that its target has given up.
    const auto other = std::find_if(m_transfers.begin(), m_transfers.end(), [&](const auto &open) {
        return open.first.requestor == place.requestor;
    });
    const Ticket hearing = other != m_transfers.end()
        ? other->second.hearing
        : Xcb::hear(m_connection, place.requestor, XCB_EVENT_MASK_PROPERTY_CHANGE);
    m_transfers[place] = { type, data, hearing, limit(place) };
    Xcb::setProperty(m_connection, place.requestor, place.property, m_atoms("INCR"),
                     { static_cast<quint32>(data.size()) });
    return true;
}

Ticket SelectionOffer::limit(const Place &place)
{
    return m_queue.after(silenceLimit, [this, place] { m_transfers.erase(place); });
}

/// A property of another program was deleted: perhaps a piece was fetched.
void SelectionOffer::fetched(const Place &place)
{
    const auto found = m_transfers.find(place);
    if (found == m_transfers.end())
        return;
    Transfer &transfer = found->second;
    const auto size = std::min(pieceSize, transfer.data.size() - transfer.sent);
    setBytes(place, transfer.type, transfer.data.constData() + transfer.sent, size);
    transfer.sent += size;
    transfer.limit = limit(place);
    if (size == 0) // The empty piece says that it was all.
        m_transfers.erase(found);
}

void SelectionOffer::setBytes(const Place &place, xcb_atom_t type, const char *bytes,
                              qsizetype size)
{
    Xcb::send(m_connection,
              xcb_change_property_checked(m_connection, XCB_PROP_MODE_REPLACE, place.requestor,
                                          place.property, type, 8, static_cast<quint32>(size),
                                          bytes));
}
