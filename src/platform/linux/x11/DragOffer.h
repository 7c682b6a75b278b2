#pragma once

#include "platform/linux/transfer/DragFormats.h"
#include "platform/linux/x11/SelectionTransfers.h"

#include <QByteArrayList>

#include <functional>
#include <memory>
#include <optional>

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
    DragOffer(MainQueue &queue, Workers &workers, SelectionTransfers &transfers,
              const QList<DragFormats::Format> &formats, QByteArrayList portalPaths);

    QList<xcb_atom_t> types();
    /// Since when what is offered is ours; owners of the clipboard are asked for that.
    void setTime(xcb_timestamp_t time) { m_time = time; }
    void answer(const xcb_selection_request_event_t &request);

private:
    enum class Answer { Given, Refused };
    struct Asked // One form, and the property in which it is wanted.
    {
        xcb_window_t requestor;
        xcb_atom_t target;
        xcb_atom_t property;
    };
    struct Known // One form. Where it has a path, its data is that file's.
    {
        xcb_atom_t type;
        QByteArray data;
        QByteArray path;
    };

    bool isPortalType(xcb_atom_t type);
    /// The file whose content the answer needs; none for most.
    QByteArray contentPath(xcb_atom_t target);
    void answerLater(const xcb_selection_request_event_t &request, const QByteArray &path,
                     std::function<std::optional<QByteArray>()> fetch,
                     std::function<Answer(const Asked &, const std::optional<QByteArray> &)> reply);
    Answer give(const Asked &asked, const std::optional<QByteArray> &content);
    Answer giveTypes(const Asked &asked);
    Answer giveMany(const Asked &asked, const std::optional<QByteArray> &content);
    void notify(const xcb_selection_request_event_t &request, Answer answer);

    MainQueue &m_queue;
    Workers &m_workers;
    SelectionTransfers &m_transfers;
    Xcb::Atoms &m_atoms;
    xcb_connection_t *m_connection;
    QList<Known> m_formats;
    QByteArrayList m_portalPaths;
    xcb_timestamp_t m_time = XCB_CURRENT_TIME;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
