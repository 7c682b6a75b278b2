#pragma once

#include "base/Ticket.h"
#include "platform/linux/DragFormats.h"
#include "platform/linux/x11/Xcb.h"

#include <QByteArrayList>

#include <list>
#include <memory>

class MainQueue;
class Workers;

/// Answers the questions of other programs about what we drag or have copied, in
/// place of the toolkit: that one refuses whoever asks without the time of the
/// drag, as GTK 4 does, and makes its own forms of file lists. Main thread; never
/// waits.
class DragOffer
{
public:
    /// portalPaths: the files that may be handed over through the portal; none
    /// where it is not offered.
    DragOffer(MainQueue &queue, Workers &workers, Xcb::Atoms &atoms,
              const QList<DragFormats::Format> &formats, QByteArrayList portalPaths);

    QList<xcb_atom_t> types();
    /// Since when what is offered is ours; owners of the clipboard are asked for that.
    void setTime(xcb_timestamp_t time) { m_time = time; }
    void answer(const xcb_selection_request_event_t &request);
    /// A target has fetched a piece of what is sent in pieces.
    void fetched(xcb_window_t requestor, xcb_atom_t property);

private:
    /// What is too large for one request goes in pieces (INCR).
    struct Transfer
    {
        xcb_window_t requestor = Xcb::none;
        xcb_atom_t property = Xcb::none;
        xcb_atom_t type = Xcb::none;
        QByteArray data;
        qsizetype sent = 0;
        Ticket limit;
    };
    enum class Answer { Given, Refused };
    struct Asked // One form, and the property in which it is wanted.
    {
        xcb_window_t requestor;
        xcb_atom_t target;
        xcb_atom_t property;
    };

    bool isPortalType(xcb_atom_t type);
    Answer give(const Asked &asked);
    Answer giveTypes(const Asked &asked);
    Answer giveData(const Asked &asked, const QByteArray &data);
    Answer giveMany(const Asked &asked);
    void answerWithKey(const xcb_selection_request_event_t &request);
    void beginTransfer(const Asked &asked, const QByteArray &data);
    void endTransfer(xcb_window_t requestor, xcb_atom_t property);
    void listenTo(xcb_window_t requestor, quint32 events);
    void setProperty(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, quint8 format,
                     quint32 count, const void *values);
    void notify(const xcb_selection_request_event_t &request, Answer answer);

    MainQueue &m_queue;
    Workers &m_workers;
    Xcb::Atoms &m_atoms;
    xcb_connection_t *m_connection;
    QList<std::pair<xcb_atom_t, QByteArray>> m_formats;
    QByteArrayList m_portalPaths;
    xcb_timestamp_t m_time = XCB_CURRENT_TIME;
    std::list<Transfer> m_transfers;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
