#pragma once

#include "base/Ticket.h"
#include "platform/TabWindow.h"

#include <QWidget>

#include <functional>

struct DockTabModel;
class ShelfStore;

/// What the docked panel's tab looks like: flat towards the screen's edge, round
/// on the other side, with an arrow that points to where the panel will come out
/// and the number of entries on the shelf.
class DockTabView final : public QWidget
{
public:
    DockTabView(ShelfStore &store, DockTabModel &model, QWidget *parent = nullptr);

    /// An assistive program presses it; the pointer comes by the window.
    std::function<void()> onPress;

    QSize sizeHint() const override { return TabWindow::size.toSize(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintShape(QPainter &painter) const;
    void paintChevron(QPainter &painter) const;
    void paintCount(QPainter &painter) const;

    ShelfStore &m_store;
    DockEdge m_edge = DockEdge::Right;
    qsizetype m_count = 0;
    Ticket m_itemsTicket;
    Ticket m_edgeTicket;
};
