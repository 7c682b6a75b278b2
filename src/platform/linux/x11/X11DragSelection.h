#pragma once

#include "platform/DragSelection.h"
#include "platform/linux/x11/WatchConnection.h"

#include <QByteArray>

#include <xcb/xcb.h>

#include <cstdint>

/// The selection XdndSelection, which every source takes anew for each drag.
/// At that moment it is asked for text/uri-list, and may answer as late as it likes;
/// a source that refuses is judged by the types that it names. Nothing is converted that has an
/// effect in the source (promised files, portal transfers).
class X11DragSelection final : public DragSelection
{
public:
    explicit X11DragSelection(WatchConnection &connection);
    X11DragSelection(const X11DragSelection &) = delete;
    X11DragSelection &operator=(const X11DragSelection &) = delete;

    int changeCount() const override { return m_changeCount; }
    bool holdsFileUrls() const override { return m_holdsFileUrls; }

private:
    enum class Question { None, UriList, Types, Targets };

    void handleEvent(const xcb_generic_event_t &event);
    void ownerChanged(xcb_window_t owner, xcb_timestamp_t time);
    void convert(Question question);
    void converted(const xcb_selection_notify_event_t &notify);
    void propertyWritten(xcb_atom_t property);
    void readProperty();
    void gotPiece(const xcb_get_property_reply_t *reply);
    void askTypes();
    void judgeTypes(const xcb_get_property_reply_t *reply);
    void finish(bool holdsFiles);

    WatchConnection &m_connection;
    Xcb::Atoms m_atoms;
    xcb_window_t m_window = Xcb::none; // Asks, and gets the answers as properties.

    int m_changeCount = 0;
    bool m_holdsFileUrls = false;

    // The announced drag and what is being asked about it.
    int m_notices = 0; // Of any program: tells late replies.
    xcb_window_t m_owner = Xcb::none;
    xcb_timestamp_t m_time = 0;
    Question m_question = Question::None;
    xcb_atom_t m_property = Xcb::none; // Where the answer is to come.
    int m_questions = 0;
    bool m_isListRefused = false;
    bool m_isIncremental = false;
    QByteArray m_list;
};
