#include "platform/linux/x11/X11DragSelection.h"

#include "platform/linux/transfer/DropFormats.h"

#include <QList>
#include <QUrl>

#include <unistd.h>
#include <xcb/xfixes.h>

#include <algorithm>

namespace {

// Enough for every honest list to show a file; in bytes.
constexpr uint32_t largestList = 256 << 10;
// Answers to earlier questions come late, so the next ones are asked elsewhere.
constexpr int propertyCount = 8;

bool holdsFile(const QByteArray &uriList)
{
    const auto urls = DropFormats::urls(uriList);
    return std::any_of(urls.begin(), urls.end(),
                       [](const QUrl &url) { return url.scheme() == QLatin1String("file"); });
}

}

X11DragSelection::X11DragSelection(WatchConnection &connection)
    : m_connection(connection)
    , m_atoms(connection.xcb())
{
    if (!connection.isUsable())
        return;
    m_window = Xcb::unseenWindow(connection.xcb());
    xcb_xfixes_select_selection_input(connection.xcb(), m_window, m_atoms("XdndSelection"),
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    connection.addEventHandler([this](const auto &event) { handleEvent(event); });
    xcb_flush(connection.xcb());
}

void X11DragSelection::handleEvent(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f; // Without the mark of sent events.
    if (type == m_connection.fixesFirstEvent() + XCB_XFIXES_SELECTION_NOTIFY) {
        const auto &notice = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
        if (notice.selection == m_atoms("XdndSelection"))
            ownerChanged(notice.owner, notice.selection_timestamp);
    } else if (type == XCB_SELECTION_NOTIFY) {
        converted(reinterpret_cast<const xcb_selection_notify_event_t &>(event));
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto &notice = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        if (notice.window == m_window && notice.state == XCB_PROPERTY_NEW_VALUE)
            propertyWritten(notice.atom);
    }
}

void X11DragSelection::ownerChanged(xcb_window_t owner, xcb_timestamp_t time)
{
    // A press before this notice is told first, and with it what it found here:
    // else this drag would be older than its own press.
    m_connection.settle();
    ++m_notices;
    if (owner == Xcb::none)
        return; // The end of a drag; what it carried stays known.
    m_connection.whenProcessKnown(owner, [this, owner, time, notice = m_notices](qint64 process) {
        if (process == ::getpid() || notice != m_notices)
            return;
        ++m_changeCount;
        m_holdsFileUrls = false;
        m_owner = owner;
        m_time = time;
        m_isListRefused = false;
        convert(Question::UriList);
    });
}

/// A source may answer no other time than that of its announcement.
void X11DragSelection::convert(Question question)
{
    m_question = question;
    m_isIncremental = false;
    m_list.clear();
    m_property = m_atoms("VANTLE_DRAG_" + QByteArray::number(m_questions++ % propertyCount));
    xcb_delete_property(m_connection.xcb(), m_window, m_property);
    xcb_convert_selection(m_connection.xcb(), m_window, m_atoms("XdndSelection"),
                          m_atoms(question == Question::UriList ? DropFormats::uriList : "TARGETS"),
                          m_property, m_time);
}

void X11DragSelection::converted(const xcb_selection_notify_event_t &notify)
{
    const bool isUriList = notify.target == m_atoms(DropFormats::uriList);
    const bool isAwaited = m_question == (isUriList ? Question::UriList : Question::Targets);
    if (!isAwaited || notify.time != m_time || notify.requestor != m_window)
        return;
    if (notify.property == m_property)
        readProperty();
    if (notify.property != Xcb::none)
        return;
    m_isListRefused = true;
    if (isUriList)
        askTypes();
    else
        finish(false);
}

/// An incremental answer goes on piece by piece, each when the last was deleted.
/// One that nobody waits for any more is let run to its end, or its source would.
void X11DragSelection::propertyWritten(xcb_atom_t property)
{
    const bool isAwaited = m_question != Question::None && property == m_property;
    if (isAwaited && m_isIncremental)
        readProperty();
    else if (!isAwaited)
        xcb_delete_property(m_connection.xcb(), m_window, property);
}

void X11DragSelection::readProperty()
{
    m_connection.whenAnswered<xcb_get_property_reply_t>(
        xcb_get_property(m_connection.xcb(), 0, m_window, m_property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                         largestList / 4),
        [this, property = m_property](const auto *reply) {
            xcb_delete_property(m_connection.xcb(), m_window, property);
            if (property == m_property)
                gotPiece(reply);
        });
}

void X11DragSelection::gotPiece(const xcb_get_property_reply_t *reply)
{
    if (m_question == Question::Targets) {
        judgeTypes(reply);
        return;
    }
    if (m_question != Question::UriList)
        return;
    if (!m_isIncremental && reply && reply->type == m_atoms("INCR")) {
        m_isIncremental = true;
        return;
    }
    const int size = reply ? xcb_get_property_value_length(reply) : 0;
    if (size > 0)
        m_list.append(static_cast<const char *>(xcb_get_property_value(reply)), size);
    const bool isComplete
        = !m_isIncremental || size == 0 || m_list.size() >= qsizetype(largestList);
    if (holdsFile(m_list))
        finish(true);
    else if (isComplete)
        askTypes();
}

void X11DragSelection::askTypes()
{
    m_question = Question::Types;
    m_connection.whenAnswered<xcb_get_property_reply_t>(
        xcb_get_property(m_connection.xcb(), 0, m_owner, m_atoms("XdndTypeList"), XCB_ATOM_ATOM, 0,
                         1024),
        [this, change = m_changeCount](const auto *reply) {
            if (change == m_changeCount && m_question == Question::Types)
                judgeTypes(reply);
        });
}

/// What a source names without handing it over. A list of addresses is one of
/// files then, unless it comes with what browsers add to links.
void X11DragSelection::judgeTypes(const xcb_get_property_reply_t *reply)
{
    const auto types = Xcb::values32(reply);
    const auto has = [&](const char *name) { return types.contains(m_atoms(name)); };
    if (has(DropFormats::portalTransfer) || has(DropFormats::portalFiles))
        finish(true);
    else if (types.isEmpty() && m_question == Question::Types)
        convert(Question::Targets); // Short lists of types are told to targets only.
    else
        finish(m_isListRefused && has(DropFormats::uriList) && !has("text/html")
               && !has("text/x-moz-url"));
}

void X11DragSelection::finish(bool holdsFiles)
{
    m_question = Question::None;
    m_list.clear();
    m_holdsFileUrls = holdsFiles;
    if (onAnswer)
        onAnswer();
}
