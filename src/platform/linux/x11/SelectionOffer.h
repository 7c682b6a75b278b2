#pragma once

#include "base/Ticket.h"
#include "platform/linux/transfer/DragFormats.h"
#include "platform/linux/x11/Xcb.h"

#include <QAbstractNativeEventFilter>
#include <QByteArrayList>

#include <map>
#include <memory>
#include <optional>

class MainQueue;
class Workers;

/// Answers the questions of other programs about what we drag or have copied, in
/// place of the toolkit: that one refuses whoever asks without the time of the
/// drag, as GTK 4 does, and makes its own forms of file lists. What is too large for one
/// request goes in pieces (INCR), each when the last was fetched, and goes on when something
/// else is offered, or nothing, by then. Main thread; waits for the X server alone.
class SelectionOffer final : private QAbstractNativeEventFilter
{
public:
    SelectionOffer(MainQueue &queue, Workers &workers, Xcb::Atoms &atoms);

    /// In place of what was offered before. owner: the window of ours that has the selection,
    /// or is about to take it. portalPaths: the files that may be handed over through the
    /// portal; none where it is not offered.
    void set(xcb_window_t owner, const QList<DragFormats::Format> &formats,
             const QByteArrayList &portalPaths = {});
    /// Since when what is offered is ours; owners of the clipboard are asked for that.
    void setTime(xcb_timestamp_t time) { m_time = time; }
    void clear();

    QList<xcb_atom_t> types();

private:
    struct Known // One form. Where it has a path, its data is that file's.
    {
        xcb_atom_t type;
        QByteArray data;
        QByteArray path;
    };
    struct Place // A property of another program, in which it wants an answer.
    {
        xcb_window_t requestor;
        xcb_atom_t property;
        auto operator<=>(const Place &) const = default;
    };
    struct Transfer
    {
        xcb_atom_t type;
        QByteArray data;
        Ticket hearing; // Of the requestor; shared by all of its transfers.
        Ticket limit;
        qsizetype sent = 0;
    };

    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void answer(const xcb_selection_request_event_t &request);
    bool isPortalType(xcb_atom_t type);
    /// The file whose content the answer needs; none for most.
    QByteArray contentPath(xcb_atom_t target);
    // Each of these tells whether there was an answer.
    bool give(const Place &place, xcb_atom_t target, const std::optional<QByteArray> &content);
    bool giveMany(const Place &place, const std::optional<QByteArray> &content);
    bool giveData(const Place &place, xcb_atom_t type, const QByteArray &data);

    Ticket limit(const Place &place);
    void fetched(const Place &place);
    void setBytes(const Place &place, xcb_atom_t type, const char *bytes, qsizetype size);

    MainQueue &m_queue;
    Workers &m_workers;
    Xcb::Atoms &m_atoms;
    xcb_connection_t *m_connection;
    xcb_window_t m_owner = Xcb::none; // None: nothing is offered.
    QList<Known> m_formats;
    QByteArrayList m_portalPaths;
    xcb_timestamp_t m_time = XCB_CURRENT_TIME;
    std::shared_ptr<int> m_alive; // What is offered; late answers look whether it still is.
    std::map<Place, Transfer> m_transfers;
};
