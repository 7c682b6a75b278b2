#include "app/settings/Localizer.h"
#include "store/ShelfStore.h"
#include "views/list/ItemListView.h"
#include "views/look/PlainText.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QToolTip>

#include <utility>

namespace {

constexpr double clickTremble = 3; // From here on a press is no click.
constexpr int menuInset = 12; // Of a menu that the keyboard opens, from the row's near side,
constexpr int menuOverlap = 6; // and from its lower edge.

}

Modifiers eventModifiers(Qt::KeyboardModifiers modifiers)
{
    Modifiers result = 0;
    if (modifiers & Qt::ShiftModifier)
        result |= EventModifier::Shift;
    if (modifiers & Qt::MetaModifier)
        result |= EventModifier::Control;
    if (modifiers & Qt::AltModifier)
        result |= EventModifier::Option;
    if (modifiers & Qt::ControlModifier)
        result |= EventModifier::Command;
    return result;
}

bool ItemListView::overButton(int row) const
{
    return m_pointer && m_delegate->buttonRect(rowRect(row)).contains(*m_pointer);
}

void ItemListView::setPointer(std::optional<QPoint> position)
{
    m_pointer = position;
    viewport()->update();
    const auto index = position ? indexAt(*position) : QModelIndex();
    if (index.isValid())
        comeNear(index.row());
}

bool ItemListView::viewportEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Enter:
        setPointer(static_cast<QEnterEvent *>(event)->position().toPoint());
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        setPointer(std::nullopt);
        break;
    case QEvent::ToolTip: {
        const auto *help = static_cast<QHelpEvent *>(event);
        const auto index = indexAt(help->pos());
        const auto button = m_delegate->buttonRect(visualRect(index));
        if (!index.isValid()) {
            QToolTip::hideText();
            return true;
        }
        const QString cut = m_delegate->shortened(m_model.item(index.row()));
        if (button.contains(help->pos()))
            ToolTip::show(help->globalPos(), m_texts.text(QStringLiteral("remove")), *viewport(),
                          button);
        else if (!cut.isEmpty())
            ToolTip::show(help->globalPos(), cut, *viewport(), visualRect(index));
        else
            QToolTip::hideText();
        return true;
    }
    default:
        break;
    }
    return QListView::viewportEvent(event);
}

void ItemListView::mousePressEvent(QMouseEvent *event)
{
    beginPress(event, Press::Count::Single);
}

void ItemListView::mouseDoubleClickEvent(QMouseEvent *event)
{
    beginPress(event, Press::Count::Double);
}

void ItemListView::beginPress(QMouseEvent *event, Press::Count count)
{
    m_press.reset();
    const QPoint at = event->position().toPoint();
    setPointer(at);
    const auto index = indexAt(at);
    if (event->button() != Qt::LeftButton || !index.isValid()) {
        event->ignore(); // The widget around the list may move the window by it.
        return;
    }
    event->accept();
    m_scroll.cancel();
    const auto &id = m_model.item(index.row()).id;
    if (overButton(index.row())) {
        m_press = Press { Press::Part::Button, id, at, count };
        return;
    }
    m_press = Press { Press::Part::Row, id, at, count };
    m_store.pressedID = id;
}

void ItemListView::cancelPress()
{
    m_press.reset();
    m_lastClicked.reset();
}

void ItemListView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint at = event->position().toPoint();
    setPointer(at);
    if (m_press && QLineF(m_press->at, at).length() >= clickTremble)
        m_press->moved = true;
    event->setAccepted(m_press.has_value());
}

void ItemListView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_press) {
        event->ignore();
        return;
    }
    event->accept();
    setPointer(event->position().toPoint());
    const Press press = *m_press;
    m_press.reset();
    endPress(press, event);
}

void ItemListView::endPress(const Press &press, QMouseEvent *event)
{
    const auto index = indexAt(event->position().toPoint());
    if (!index.isValid() || m_model.item(index.row()).id != press.id)
        return;
    if (press.part == Press::Part::Button) {
        m_lastClicked.reset();
        if (overButton(index.row()))
            m_store.removeIds({ press.id });
        return;
    }
    if (press.moved)
        return;
    if (press.count == Press::Count::Double && m_lastClicked == press.id) {
        m_lastClicked.reset();
        const ShelfItem item = m_model.item(index.row());
        if (onActivate)
            onActivate(item);
        return;
    }
    m_lastClicked = press.id;
    m_store.click(press.id, eventModifiers(event->modifiers()));
}

void ItemListView::wheelEvent(QWheelEvent *event)
{
    m_scroll.cancel();
    QListView::wheelEvent(event);
}

void ItemListView::keyPressEvent(QKeyEvent *event)
{
    event->ignore();
}

void ItemListView::comeNear(int row)
{
    const ShelfItem &item = m_model.item(row);
    if (m_near == item.id)
        return;
    m_near = item.id;
    if (onNear)
        onNear(item);
}

void ItemListView::askForMenu()
{
    const auto focus = m_store.focus.value();
    const int row = focus ? m_model.rowOf(*focus) : -1;
    if (row >= 0 && onMenu)
        openMenu(row);
}

void ItemListView::openMenu(int row)
{
    const Motion motion
        = std::exchange(m_motion, Motion::Reduced); // The menu stays where it opens.
    m_scroll.cancel();
    scrollTo(m_model.index(row));
    m_motion = motion;
    const QRect rect = rowRect(row);
    const QPoint below(isRightToLeft() ? rect.right() - menuInset : rect.left() + menuInset,
                       rect.bottom() - menuOverlap);
    onMenu(m_model.item(row), viewport()->mapToGlobal(below));
}

bool ItemListView::hasKeyboard() const
{
    const QWidget *focus = QApplication::focusWidget();
    return focus && (focus == this || focus->isAncestorOf(this));
}

bool ItemListView::canPerform(RowAction action) const
{
    switch (action) {
    case RowAction::Menu:
        return bool(onMenu);
    case RowAction::Activate:
        return bool(onActivate);
    case RowAction::Preview:
        return bool(onPreview);
    default:
        return true;
    }
}

void ItemListView::perform(RowAction action, const QUuid &id)
{
    m_queue.post([this, action, id, alive = std::weak_ptr(m_alive)] {
        const int row = alive.lock() ? m_model.rowOf(id) : -1;
        if (row < 0 || !canPerform(action))
            return;
        const ShelfItem item = m_model.item(row);
        switch (action) {
        case RowAction::Press:
            return m_store.click(id, 0);
        case RowAction::Toggle:
            return m_store.click(id, EventModifier::Command);
        case RowAction::Menu:
            return openMenu(row);
        case RowAction::Activate:
            return onActivate(item);
        case RowAction::Preview:
            return onPreview(item);
        case RowAction::Remove:
            return m_store.removeIds({ id });
        }
    });
}

void ItemListView::contextMenuEvent(QContextMenuEvent *event)
{
    const auto index = indexAt(event->pos());
    event->setAccepted(index.isValid());
    if (index.isValid() && onMenu)
        onMenu(m_model.item(index.row()), event->globalPos());
}
