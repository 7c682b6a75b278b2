#include "views/list/ItemListView.h"

#include "store/ShelfStore.h"
#include "views/look/SlimScrollBar.h"

#include <QCoreApplication>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace {

constexpr int rowSpacing = 5;
constexpr int listPadding = 8; // Around all rows.
constexpr double scrollDuration = 0.15;

static_assert(listPadding == SlimScrollBar::thickness, "The scroll bar lies in the padding.");

}

ItemListView::ItemListView(ShelfStore &store, const Localizer &texts, Icons &icons,
                           Symbols &symbols, MainQueue &queue, QWidget *parent)
    : QListView(parent)
    , m_store(store)
    , m_texts(texts)
    , m_queue(queue)
    , m_delegate(new ItemRowDelegate(m_model, icons, symbols, *this))
    , m_rows(queue)
    , m_scroll(queue)
    , m_accessible(*this, m_model, store, queue)
{
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setDragDropMode(NoDragDrop);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new SlimScrollBar(this));
    viewport()->setAutoFillBackground(false);
    viewport()->setMouseTracking(true);
    setItemDelegate(m_delegate);
    setModel(&m_model);

    m_thumbnails.onPicture = [this](const QUuid &id) {
        if (const int row = m_model.rowOf(id); row >= 0)
            viewport()->update(rowRect(row));
    };
    m_rows.onFrame = [this] { viewport()->update(); };
    m_model.update(m_store.items.value());
    m_shelf = m_store.currentID.value();
    m_subscriptions.push_back(m_store.items.subscribe(
        [this](const QList<ShelfItem> &next) { change(next); }, Deliver::ChangesOnly));
    m_subscriptions.push_back(m_store.selection.subscribe(
        [this](const QSet<QUuid> &) { viewport()->update(); }, Deliver::ChangesOnly));
    m_subscriptions.push_back(m_store.focus.subscribe(
        [this](const std::optional<QUuid> &) {
            m_queue.post([this, alive = std::weak_ptr(m_alive)] {
                if (alive.lock())
                    focusChanged();
            });
        },
        Deliver::ChangesOnly));
}

void ItemListView::setThumbnails(Thumbnails &thumbnails)
{
    m_thumbnails.setSource(&thumbnails);
    viewport()->update();
}

int ItemListView::rowTop(int row) const
{
    return listPadding + row * (m_delegate->height() + rowSpacing);
}

QRect ItemListView::rowRect(int row) const
{
    // Where there is a scroll bar, it takes the place of the padding at that side.
    const int barRoom = verticalScrollBar()->isVisibleTo(this) ? 0 : listPadding;
    const bool mirrored = isRightToLeft();
    return { mirrored ? barRoom : listPadding, rowTop(row) - verticalOffset(),
             viewport()->width() - listPadding - barRoom, m_delegate->height() };
}

std::pair<int, int> ItemListView::visibleRows(int margin) const
{
    const int pitch = m_delegate->height() + rowSpacing;
    const int first = (verticalOffset() - margin - listPadding) / pitch;
    const int last = (verticalOffset() + viewport()->height() + margin - listPadding) / pitch;
    return { std::max(0, first), std::min(m_model.rowCount(), last + 1) };
}

QRect ItemListView::visualRect(const QModelIndex &index) const
{
    return index.isValid() ? rowRect(index.row()) : QRect();
}

QModelIndex ItemListView::indexAt(const QPoint &point) const
{
    if (m_model.rowCount() == 0)
        return {};
    const int pitch = m_delegate->height() + rowSpacing;
    const int y = point.y() + verticalOffset() - listPadding;
    const int row = y / pitch;
    if (y < 0 || row >= m_model.rowCount() || !rowRect(row).contains(point))
        return {};
    return m_model.index(row);
}

int ItemListView::verticalOffset() const
{
    return verticalScrollBar()->value();
}

void ItemListView::doItemsLayout()
{
    // Past the list view, which would lay out every row.
    QAbstractItemView::doItemsLayout(); // NOLINT(bugprone-parent-virtual-call)
}

void ItemListView::updateGeometries()
{
    const int count = m_model.rowCount();
    const int contents = count == 0 ? 0 : rowTop(count) + listPadding - rowSpacing;
    if (count > 0)
        verticalScrollBar()->setSingleStep((m_delegate->height() + rowSpacing) / 2);
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setRange(0, std::max(0, contents - viewport()->height()));
    QAbstractItemView::updateGeometries(); // NOLINT(bugprone-parent-virtual-call)
}

void ItemListView::scrollContentsBy(int, int)
{
    viewport()->update();
}

void ItemListView::resizeEvent(QResizeEvent *event)
{
    QListView::resizeEvent(event);
    updateGeometries();
}

/// The toolkit shows or hides a scroll bar a turn of the loop after its range was
/// set, which may be after the first picture.
void ItemListView::showEvent(QShowEvent *event)
{
    QListView::showEvent(event);
    QEvent layOut(QEvent::LayoutRequest);
    QCoreApplication::sendEvent(this, &layOut);
    if (std::exchange(m_endLanded, false))
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

/// Nothing is decoded for a panel that nobody sees.
void ItemListView::hideEvent(QHideEvent *event)
{
    QListView::hideEvent(event);
    m_thumbnails.show({}, ItemRowDelegate::iconSize, devicePixelRatio());
}

void ItemListView::changeEvent(QEvent *event)
{
    QListView::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::PaletteChange:
    case QEvent::LayoutDirectionChange:
        m_delegate->refresh();
        updateGeometries();
        break;
    default:
        break;
    }
}

void ItemListView::scrollTo(const QModelIndex &index, ScrollHint)
{
    if (!index.isValid())
        return;
    QScrollBar *bar = verticalScrollBar();
    const int top = rowTop(index.row()) - listPadding;
    const int bottom = rowTop(index.row()) + m_delegate->height() + listPadding;
    const int from = bar->value();
    const int to = std::clamp(std::clamp(from, bottom - viewport()->height(),
                                         std::max(top, bottom - viewport()->height())),
                              bar->minimum(), bar->maximum());
    if (to == from)
        return;
    if (m_motion == Motion::Reduced || !isVisible()) {
        bar->setValue(to);
        return;
    }
    m_scroll.begin(scrollDuration, AnimationCurve::EaseOut, [bar, from, to](double progress) {
        bar->setValue(from + qRound((to - from) * progress));
    });
}

void ItemListView::focusChanged()
{
    const auto focus = m_store.focus.value();
    const int row = focus ? m_model.rowOf(*focus) : -1;
    m_accessible.focusChanged();
    if (row < 0)
        return;
    scrollTo(m_model.index(row));
    comeNear(row);
}

void ItemListView::change(const QList<ShelfItem> &next)
{
    const auto before = m_model.items();
    const QUuid shelf = m_store.currentID.value();
    const bool isSameShelf = std::exchange(m_shelf, shelf) == shelf;
    const double scrolledBefore = verticalOffset();
    const auto changes = m_model.update(next);
    doItemsLayout();
    const bool moved = changes && std::ranges::any_of(*changes, [](const RowChange &change) {
                           return change.kind != RowChange::Kind::Update;
                       });
    if (changes && !moved)
        return;
    // Another shelf, or most of the list: motion would only blur what is new.
    const bool replaced = !changes
        || (!before.isEmpty() && !next.isEmpty()
            && changes->front() == RowChange { RowChange::Kind::Remove, 0, int(before.size()), 0 });
    if (replaced || m_motion == Motion::Reduced || !isVisible())
        m_rows.stop();
    else
        animate(before, *changes, scrolledBefore);
    m_endLanded = before.isEmpty() && isSameShelf && !isVisible();
    if (replaced || !isSameShelf)
        return;
    // What was dropped or pasted lands at the end, which may lie below what shows.
    for (const RowChange &change : *changes) {
        if (change.kind == RowChange::Kind::Insert)
            scrollTo(m_model.index(change.first + change.count - 1));
    }
}

void ItemListView::animate(const QList<ShelfItem> &before, const RowChanges &changes,
                           double scrolledBefore)
{
    const double reach = viewport()->height();
    const auto seenAt
        = [&](int row) { return rowTop(row) - scrolledBefore + m_rows.shift(before[row].id); };
    RowMotion::Start start { m_rows.ghosts(), {}, {} };
    for (const auto &change : changes) {
        if (change.kind != RowChange::Kind::Remove)
            continue;
        for (int row = change.first; row < change.first + change.count; ++row) {
            const double top = seenAt(row);
            if (top > -m_delegate->height() && top < reach)
                start.ghosts.push_back({ before[row], top, m_rows.opacity(before[row].id) });
        }
    }
    const auto [first, end] = visibleRows(viewport()->height());
    for (int row = first; row < end; ++row) {
        const auto &id = m_model.item(row).id;
        const auto previous = previousRow(changes, row);
        if (previous) {
            const double distance = seenAt(*previous) - rowRect(row).top();
            start.shifts.insert(id, std::clamp(distance, -reach, reach));
        }
        const double opacity = previous ? m_rows.opacity(id) : 0;
        if (opacity < 1)
            start.opacities.insert(id, opacity);
    }
    m_rows.begin(std::move(start));
}

RowLook ItemListView::lookOf(int row) const
{
    const auto &id = m_model.item(row).id;
    RowLook look;
    look.selected = m_store.selection.value().contains(id);
    look.hovered = m_pointer && rowRect(row).contains(*m_pointer);
    if (look.hovered) {
        const bool pressed = m_press && m_press->part == Press::Part::Button && m_press->id == id;
        look.button = !overButton(row) ? RowLook::Button::Shown
            : pressed                  ? RowLook::Button::Pressed
                                       : RowLook::Button::Hovered;
    }
    return look;
}

void ItemListView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const double ratio = devicePixelRatio();
    const auto picture = [&](const ShelfItem &item) {
        return m_thumbnails.picture(item, ItemRowDelegate::iconSize, ratio);
    };
    for (const auto &ghost : m_rows.ghosts()) {
        painter.setOpacity(ghost.opacity);
        auto rect = rowRect(0);
        rect.moveTop(qRound(ghost.top));
        const bool selected = m_store.selection.value().contains(ghost.item.id);
        m_delegate->paintRow(painter, rect, ghost.item,
                             { selected, false, RowLook::Button::Hidden, picture(ghost.item) });
    }
    const auto [first, end] = visibleRows(m_rows.isRunning() ? viewport()->height() : 0);
    m_thumbnails.show(m_model.items().mid(first, end - first), ItemRowDelegate::iconSize, ratio);
    for (int row = first; row < end; ++row) {
        const auto &item = m_model.item(row);
        const QRect rect = rowRect(row).translated(0, qRound(m_rows.shift(item.id)));
        if (!rect.intersects(event->rect()))
            continue;
        painter.setOpacity(m_rows.opacity(item.id));
        RowLook look = lookOf(row);
        look.picture = picture(item);
        m_delegate->paintRow(painter, rect, item, look);
    }
}
