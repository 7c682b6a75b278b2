#pragma once

#include "base/Ticket.h"

#include <QObject>
#include <QSet>
#include <QUuid>

#include <memory>
#include <optional>

class ItemListModel;
class ItemListView;
class MainQueue;
class ShelfStore;

/// Makes the list and its rows known to assistive programs, and tells them what
/// changes: rows that come and go, their names, selection and focus. Rows get an
/// object of their own when somebody asks for them; while nobody listens, nothing is
/// done. Main thread.
class ItemListAccessible
{
public:
    ItemListAccessible(ItemListView &view, const ItemListModel &model, ShelfStore &store,
                       MainQueue &queue);

    /// The keyboard came to the list, or the focus to another row of it.
    void focusChanged();

private:
    class List;

    List *list() const; // None while nobody listens.
    void selectionChanged(const QSet<QUuid> &next);
    void arrived(int first, int last);
    void leaving(int first, int last);
    void changed(int first, int last);

    ItemListView &m_view;
    const ItemListModel &m_model;
    ShelfStore &m_store;
    MainQueue &m_queue;
    QObject m_context; // Ends the connections to the model with us.
    Ticket m_selectionTicket;
    std::optional<QSet<QUuid>> m_told; // The selection that was told last.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
