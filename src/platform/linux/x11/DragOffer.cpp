#include "platform/linux/x11/DragOffer.h"

#include "base/MainQueue.h"
#include "base/Workers.h"
#include "platform/linux/files/PlainFile.h"
#include "platform/linux/transfer/DropFormats.h"
#include "platform/linux/transfer/PortalFiles.h"

#include <QFile>

#include <algorithm>
#include <utility>

namespace {

xcb_atom_t propertyOf(const xcb_selection_request_event_t &request)
{
    return request.property ? request.property : request.target; // Old targets name none.
}

std::optional<QByteArray> contentOf(const QByteArray &path)
{
    const int descriptor = PlainFile::open(path);
    QFile file;
    if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFile::AutoCloseHandle))
        return std::nullopt;
    QByteArray bytes = file.read(DragFormats::contentCap + 1);
    if (bytes.isEmpty() || bytes.size() > DragFormats::contentCap)
        return std::nullopt;
    return bytes;
}

}

DragOffer::DragOffer(MainQueue &queue, Workers &workers, SelectionTransfers &transfers,
                     const QList<DragFormats::Format> &formats, QByteArrayList portalPaths)
    : m_queue(queue)
    , m_workers(workers)
    , m_transfers(transfers)
    , m_atoms(transfers.atoms())
    , m_connection(Xcb::toolkitConnection())
    , m_portalPaths(std::move(portalPaths))
{
    m_atoms.fetch({ "TARGETS", "MULTIPLE", "ATOM_PAIR", "INCR", "TIMESTAMP",
                    DropFormats::portalTransfer, DropFormats::portalFiles });
    for (const auto &format : formats)
        m_formats.append({ m_atoms(format.type.toUtf8()), format.data, format.path });
}

QList<xcb_atom_t> DragOffer::types()
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

void DragOffer::answer(const xcb_selection_request_event_t &request)
{
    if (isPortalType(request.target) && !m_portalPaths.isEmpty()) {
        // The portal gets to know the files only now, since a registration opens them to
        // whoever has the key. A key is good for one fetch.
        answerLater(
            request, m_portalPaths.first(),
            [paths = m_portalPaths] { return PortalFiles::transfer(paths); },
            [this](const Asked &asked, const std::optional<QByteArray> &key) {
                if (!key)
                    return Answer::Refused;
                m_transfers.give(asked.requestor, asked.property, asked.target, *key + '\0');
                return Answer::Given;
            });
    } else if (const QByteArray path = contentPath(request.target); !path.isEmpty()) {
        answerLater(
            request, path, [path] { return contentOf(path); },
            [this](const Asked &asked, const std::optional<QByteArray> &content) {
                return give(asked, content);
            });
    } else {
        notify(request, give({ request.requestor, request.target, propertyOf(request) }, {}));
    }
}

bool DragOffer::isPortalType(xcb_atom_t type)
{
    return type == m_atoms(DropFormats::portalTransfer)
        || type == m_atoms(DropFormats::portalFiles);
}

QByteArray DragOffer::contentPath(xcb_atom_t target)
{
    const bool isAny = target == m_atoms("MULTIPLE");
    const auto format = std::find_if(m_formats.begin(), m_formats.end(), [&](const Known &known) {
        return !known.path.isEmpty() && (isAny || known.type == target);
    });
    return format == m_formats.end() ? QByteArray() : format->path;
}

void DragOffer::answerLater(
    const xcb_selection_request_event_t &request, const QByteArray &path,
    std::function<std::optional<QByteArray>()> fetch,
    std::function<Answer(const Asked &, const std::optional<QByteArray> &)> reply)
{
    const auto answered = [this, alive = std::weak_ptr(m_alive), request,
                           reply = std::move(reply)](const std::optional<QByteArray> &fetched) {
        if (alive.lock())
            notify(request,
                   reply({ request.requestor, request.target, propertyOf(request) }, fetched));
    };
    m_workers.runAt(path, [&queue = m_queue, fetch = std::move(fetch), answered] {
        queue.post([fetched = fetch(), answered] { answered(fetched); });
    });
}

DragOffer::Answer DragOffer::give(const Asked &asked, const std::optional<QByteArray> &content)
{
    if (asked.target == m_atoms("TARGETS"))
        return giveTypes(asked);
    if (asked.target == m_atoms("MULTIPLE"))
        return giveMany(asked, content);
    if (asked.target == m_atoms("TIMESTAMP") && m_time != XCB_CURRENT_TIME) {
        m_transfers.setProperty(asked.requestor, asked.property, XCB_ATOM_INTEGER, 32, 1, &m_time);
        return Answer::Given;
    }
    const auto format = std::find_if(m_formats.begin(), m_formats.end(), [&](const Known &known) {
        return known.type == asked.target;
    });
    if (format == m_formats.end() || (!format->path.isEmpty() && !content))
        return Answer::Refused;
    m_transfers.give(asked.requestor, asked.property, asked.target,
                     format->path.isEmpty() ? format->data : *content);
    return Answer::Given;
}

DragOffer::Answer DragOffer::giveTypes(const Asked &asked)
{
    auto list = QList { m_atoms("TARGETS"), m_atoms("MULTIPLE") } + types();
    if (m_time != XCB_CURRENT_TIME)
        list.append(m_atoms("TIMESTAMP"));
    m_transfers.setProperty(asked.requestor, asked.property, XCB_ATOM_ATOM, 32,
                            static_cast<quint32>(list.size()), list.constData());
    return Answer::Given;
}

/// Clipboard managers fetch everything in one go: the property lists pairs of a
/// form and the property for it, and what is refused is struck out there.
DragOffer::Answer DragOffer::giveMany(const Asked &asked, const std::optional<QByteArray> &content)
{
    constexpr quint32 limit = 256;
    const auto pairType = m_atoms("ATOM_PAIR");
    auto pairs = Xcb::property32(m_connection, asked.requestor, asked.property, pairType, limit);
    if (pairs.isEmpty())
        return Answer::Refused;
    for (qsizetype i = 0; i + 1 < pairs.size(); i += 2) {
        const bool isNested = pairs[i] == asked.target || pairs[i + 1] == asked.property;
        if (isNested
            || give({ asked.requestor, pairs[i], pairs[i + 1] }, content) == Answer::Refused)
            pairs[i + 1] = Xcb::none;
    }
    m_transfers.setProperty(asked.requestor, asked.property, pairType, 32,
                            static_cast<quint32>(pairs.size()), pairs.constData());
    return Answer::Given;
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
