#include "platform/linux/x11/DragOffer.h"

#include "base/MainQueue.h"
#include "base/Workers.h"
#include "platform/linux/DropFormats.h"
#include "platform/linux/PortalFiles.h"

#include <algorithm>
#include <utility>

namespace {

// Below the largest request of every server, which is 256 KiB at least.
constexpr qsizetype pieceSize = 128 << 10;
constexpr double silenceLimit = 10; // Seconds for a target to fetch a piece.

xcb_atom_t propertyOf(const xcb_selection_request_event_t &request)
{
    return request.property ? request.property : request.target; // Old targets name none.
}

}

DragOffer::DragOffer(MainQueue &queue, Workers &workers, Xcb::Atoms &atoms,
                     const QList<DragFormats::Format> &formats, QByteArrayList portalPaths)
    : m_queue(queue)
    , m_workers(workers)
    , m_atoms(atoms)
    , m_connection(Xcb::toolkitConnection())
    , m_portalPaths(std::move(portalPaths))
{
    m_atoms.fetch({ "TARGETS", "MULTIPLE", "ATOM_PAIR", "INCR", "TIMESTAMP",
                    DropFormats::portalTransfer, DropFormats::portalFiles });
    for (const auto &format : formats)
        m_formats.append({ m_atoms(format.type.toUtf8()), format.data });
}

QList<xcb_atom_t> DragOffer::types()
{
    QList<xcb_atom_t> types;
    for (const auto &format : m_formats)
        types.append(format.first);
    if (!m_portalPaths.isEmpty()) {
        types.append(m_atoms(DropFormats::portalTransfer));
        types.append(m_atoms(DropFormats::portalFiles));
    }
    return types;
}

void DragOffer::answer(const xcb_selection_request_event_t &request)
{
    if (isPortalType(request.target) && !m_portalPaths.isEmpty())
        return answerWithKey(request);
    notify(request, give({ request.requestor, request.target, propertyOf(request) }));
}

bool DragOffer::isPortalType(xcb_atom_t type)
{
    return type == m_atoms(DropFormats::portalTransfer)
        || type == m_atoms(DropFormats::portalFiles);
}

DragOffer::Answer DragOffer::give(const Asked &asked)
{
    if (asked.target == m_atoms("TARGETS"))
        return giveTypes(asked);
    if (asked.target == m_atoms("MULTIPLE"))
        return giveMany(asked);
    if (asked.target == m_atoms("TIMESTAMP") && m_time != XCB_CURRENT_TIME) {
        setProperty(asked.requestor, asked.property, XCB_ATOM_INTEGER, 32, 1, &m_time);
        return Answer::Given;
    }
    const auto format = std::find_if(m_formats.begin(), m_formats.end(), [&](const auto &known) {
        return known.first == asked.target;
    });
    return format == m_formats.end() ? Answer::Refused : giveData(asked, format->second);
}

DragOffer::Answer DragOffer::giveTypes(const Asked &asked)
{
    auto list = QList { m_atoms("TARGETS"), m_atoms("MULTIPLE") } + types();
    if (m_time != XCB_CURRENT_TIME)
        list.append(m_atoms("TIMESTAMP"));
    setProperty(asked.requestor, asked.property, XCB_ATOM_ATOM, 32,
                static_cast<quint32>(list.size()), list.constData());
    return Answer::Given;
}

DragOffer::Answer DragOffer::giveData(const Asked &asked, const QByteArray &data)
{
    if (data.size() > pieceSize)
        beginTransfer(asked, data);
    else
        setProperty(asked.requestor, asked.property, asked.target, 8,
                    static_cast<quint32>(data.size()), data.constData());
    return Answer::Given;
}

/// Clipboard managers fetch everything in one go: the property lists pairs of a
/// form and the property for it, and what is refused is struck out there.
DragOffer::Answer DragOffer::giveMany(const Asked &asked)
{
    constexpr quint32 limit = 256;
    const auto pairType = m_atoms("ATOM_PAIR");
    auto pairs = Xcb::property32(m_connection, asked.requestor, asked.property, pairType, limit);
    if (pairs.isEmpty())
        return Answer::Refused;
    for (qsizetype i = 0; i + 1 < pairs.size(); i += 2) {
        const bool isNested = pairs[i] == asked.target || pairs[i + 1] == asked.property;
        if (isNested || give({ asked.requestor, pairs[i], pairs[i + 1] }) == Answer::Refused)
            pairs[i + 1] = Xcb::none;
    }
    setProperty(asked.requestor, asked.property, pairType, 32, static_cast<quint32>(pairs.size()),
                pairs.constData());
    return Answer::Given;
}

/// The portal gets to know the files only now, since a registration opens them to
/// whoever has the key. A key is good for one fetch.
void DragOffer::answerWithKey(const xcb_selection_request_event_t &request)
{
    const auto reply
        = [this, alive = std::weak_ptr(m_alive), request](const std::optional<QByteArray> &key) {
              if (!alive.lock())
                  return;
              const Asked asked { request.requestor, request.target, propertyOf(request) };
              notify(request, key ? giveData(asked, *key + '\0') : Answer::Refused);
          };
    m_workers.run(WorkerPriority::UserInitiated, [&queue = m_queue, paths = m_portalPaths, reply] {
        queue.post([key = PortalFiles::transfer(paths), reply] { reply(key); });
    });
}

/// Told of before the notice that there is something to fetch.
void DragOffer::beginTransfer(const Asked &asked, const QByteArray &data)
{
    const auto [requestor, target, property] = asked;
    listenTo(requestor, XCB_EVENT_MASK_PROPERTY_CHANGE);
    auto limit = m_queue.after(silenceLimit,
                               [this, requestor = asked.requestor, property = asked.property] {
                                   endTransfer(requestor, property);
                               });
    m_transfers.push_back({ requestor, property, target, data, 0, std::move(limit) });
    const auto size = static_cast<quint32>(data.size());
    setProperty(requestor, property, m_atoms("INCR"), 32, 1, &size);
}

void DragOffer::fetched(xcb_window_t requestor, xcb_atom_t property)
{
    const auto transfer
        = std::find_if(m_transfers.begin(), m_transfers.end(), [&](const Transfer &open) {
              return open.requestor == requestor && open.property == property;
          });
    if (transfer == m_transfers.end())
        return;
    const auto size = std::min(pieceSize, transfer->data.size() - transfer->sent);
    setProperty(requestor, property, transfer->type, 8, static_cast<quint32>(size),
                transfer->data.constData() + transfer->sent);
    transfer->sent += size;
    if (size == 0) // The empty piece says that it was all.
        return endTransfer(requestor, property);
    transfer->limit = m_queue.after(
        silenceLimit, [this, requestor, property] { endTransfer(requestor, property); });
}

void DragOffer::endTransfer(xcb_window_t requestor, xcb_atom_t property)
{
    m_transfers.remove_if([&](const Transfer &open) {
        return open.requestor == requestor && open.property == property;
    });
    const bool isBusy = std::any_of(m_transfers.begin(), m_transfers.end(),
                                    [&](const auto &open) { return open.requestor == requestor; });
    if (!isBusy)
        listenTo(requestor, XCB_EVENT_MASK_NO_EVENT);
}

void DragOffer::listenTo(xcb_window_t requestor, quint32 events)
{
    // A window of the toolkit's, which listens already and must not stop.
    if (Xcb::isOwn(m_connection, requestor))
        return;
    const auto cookie
        = xcb_change_window_attributes_checked(m_connection, requestor, XCB_CW_EVENT_MASK, &events);
    xcb_discard_reply(m_connection, cookie.sequence);
    xcb_flush(m_connection);
}

void DragOffer::setProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, quint8 format,
                            quint32 count, const void *values)
{
    const auto cookie = xcb_change_property_checked(m_connection, XCB_PROP_MODE_REPLACE, window,
                                                    name, type, format, count, values);
    xcb_discard_reply(m_connection, cookie.sequence);
    xcb_flush(m_connection);
}

void DragOffer::notify(const xcb_selection_request_event_t &request, Answer answer)
{
    xcb_selection_notify_event_t event {};
    event.response_type = XCB_SELECTION_NOTIFY;
    event.time = request.time;
    event.requestor = request.requestor;
    event.selection = request.selection;
    event.target = request.target;
    event.property = answer == Answer::Given ? propertyOf(request) : Xcb::none;
    const auto cookie
        = xcb_send_event_checked(m_connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                                 reinterpret_cast<const char *>(&event));
    xcb_discard_reply(m_connection, cookie.sequence);
    xcb_flush(m_connection);
}
