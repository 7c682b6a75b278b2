#include "views/list/ItemListAccessible.h"

#include "app/settings/Localizer.h"
#include "store/ShelfStore.h"
#include "views/list/ItemListModel.h"
#include "views/list/ItemListView.h"

#include <QAccessibleWidget>
#include <QHash>

#include <algorithm>
#include <array>
#include <utility>

namespace {

using Action = ItemListView::RowAction;

constexpr int mostTold = 50; // Changes of one kind at a time; of more the list as a whole tells.

void tell(QAccessibleInterface *about, QAccessible::Event what)
{
    QAccessibleEvent event(about, what);
    QAccessible::updateAccessibility(&event);
}

struct NamedAction
{
    Action action;
    QString name;
    QString key; // Of its text; empty where the toolkit has one.
};

const std::array<NamedAction, 6> &rowActions()
{
    static const std::array<NamedAction, 6> actions {
        NamedAction { Action::Press, QAccessibleActionInterface::pressAction(), {} },
        NamedAction { Action::Toggle, QAccessibleActionInterface::toggleAction(), {} },
        NamedAction { Action::Menu, QAccessibleActionInterface::showMenuAction(), {} },
        NamedAction { Action::Activate, QStringLiteral("activate"), QStringLiteral("open") },
        NamedAction { Action::Preview, QStringLiteral("preview"),
                      QStringLiteral("quick_look_short") },
        NamedAction { Action::Remove, QStringLiteral("remove"), QStringLiteral("remove") },
    };
    return actions;
}

/// One row, for as long as its entry is in the list.
class AccessibleRow final : public QAccessibleInterface, public QAccessibleActionInterface
{
public:
    AccessibleRow(ItemListView &view, const QUuid &id)
        : m_view(view)
        , m_id(id)
    {
    }

    int row() const
    {
        // Where it was seen last, most times: a list may be long.
        const ItemListModel &rows = m_view.rows();
        if (m_lastRow < 0 || m_lastRow >= rows.rowCount() || rows.item(m_lastRow).id != m_id)
            m_lastRow = rows.rowOf(m_id);
        return m_lastRow;
    }

    bool isValid() const override { return row() >= 0; }
    QObject *object() const override { return nullptr; }
    QWindow *window() const override { return m_view.window()->windowHandle(); }
    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(&m_view);
    }
    QAccessibleInterface *child(int) const override { return nullptr; }
    QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text kind) const override
    {
        if (!isValid())
            return {};
        const ShelfItem &item = m_view.rows().item(row());
        if (kind == QAccessible::Name)
            return itemTitle(item);
        return kind == QAccessible::Description ? itemSubtitle(item) : QString();
    }
    void setText(QAccessible::Text, const QString &) override { }

    QRect rect() const override
    {
        const QRect place = m_view.visualRect(m_view.rows().index(row()));
        return { m_view.viewport()->mapToGlobal(place.topLeft()), place.size() };
    }

    QAccessible::State state() const override
    {
        QAccessible::State state;
        if (!isValid()) {
            state.invalid = true;
            return state;
        }
        const QRect place = m_view.visualRect(m_view.rows().index(row()));
        state.selectable = state.multiSelectable = state.focusable = true;
        state.selected = m_view.store().selection.value().contains(m_id);
        state.focused = m_view.hasKeyboard() && m_view.store().focus.value() == m_id;
        state.invisible = !m_view.isVisible();
        state.offscreen = !m_view.viewport()->rect().intersects(place);
        return state;
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface *>(this);
        return nullptr;
    }
    QStringList actionNames() const override
    {
        QStringList names;
        for (const NamedAction &action : rowActions()) {
            if (m_view.canPerform(action.action))
                names.append(action.name);
        }
        return names;
    }
    QString localizedActionName(const QString &name) const override
    {
        const auto found = std::ranges::find(rowActions(), name, &NamedAction::name);
        if (found == rowActions().end() || found->key.isEmpty())
            return QAccessibleActionInterface::localizedActionName(name);
        return m_view.texts().text(found->key);
    }
    void doAction(const QString &name) override
    {
        const auto found = std::ranges::find(rowActions(), name, &NamedAction::name);
        if (found != rowActions().end())
            m_view.perform(found->action, m_id);
    }
    QStringList keyBindingsForAction(const QString &) const override { return {}; }

private:
    ItemListView &m_view;
    QUuid m_id;
    mutable int m_lastRow = -1;
};

}

/// Its rows are its only children.
class ItemListAccessible::List final : public QAccessibleWidget
{
public:
    explicit List(ItemListView &view)
        : QAccessibleWidget(&view, QAccessible::List)
        , m_view(view)
    {
    }
    ~List() override
    {
        for (const QAccessible::Id id : std::as_const(m_rows))
            QAccessible::deleteAccessibleInterface(id);
    }

    int childCount() const override { return m_view.rows().rowCount(); }
    QAccessibleInterface *child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        const QUuid &id = m_view.rows().item(index).id;
        if (auto *known = this->known(id))
            return known;
        auto *row = new AccessibleRow(m_view, id); // The toolkit's cache owns it.
        m_rows.insert(id, QAccessible::registerAccessibleInterface(row));
        return row;
    }
    int indexOfChild(const QAccessibleInterface *child) const override
    {
        const auto *row = dynamic_cast<const AccessibleRow *>(child);
        return row ? row->row() : -1;
    }
    QAccessibleInterface *childAt(int x, int y) const override
    {
        const auto index = m_view.indexAt(m_view.viewport()->mapFromGlobal(QPoint(x, y)));
        return index.isValid() ? child(index.row()) : nullptr;
    }
    QAccessibleInterface *focusChild() const override
    {
        const auto focus = m_view.store().focus.value();
        return m_view.hasKeyboard() && focus ? child(m_view.rows().rowOf(*focus)) : nullptr;
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.multiSelectable = true;
        return state;
    }

    QAccessibleInterface *known(const QUuid &id) const
    {
        const auto found = m_rows.constFind(id);
        return found == m_rows.cend() ? nullptr : QAccessible::accessibleInterface(*found);
    }
    void forget(const QUuid &id)
    {
        if (const QAccessible::Id known = m_rows.take(id))
            QAccessible::deleteAccessibleInterface(known);
    }

private:
    ItemListView &m_view;
    mutable QHash<QUuid, QAccessible::Id> m_rows; // Those that were asked for.
};

ItemListAccessible::ItemListAccessible(ItemListView &view, const ItemListModel &model,
                                       ShelfStore &store, MainQueue &queue)
    : m_view(view)
    , m_model(model)
    , m_store(store)
    , m_queue(queue)
{
    static const auto make = [](const QString &, QObject *object) -> QAccessibleInterface * {
        auto *list = dynamic_cast<ItemListView *>(object);
        return list ? new List(*list) : nullptr;
    };
    [[maybe_unused]] static const bool installed = (QAccessible::installFactory(make), true);
    using Model = QAbstractItemModel;
    QObject::connect(&model, &Model::rowsInserted, &m_context,
                     [this](const auto &, int first, int last) { arrived(first, last); });
    QObject::connect(&model, &Model::rowsAboutToBeRemoved, &m_context,
                     [this](const auto &, int first, int last) { leaving(first, last); });
    QObject::connect(
        &model, &Model::dataChanged, &m_context,
        [this](const auto &first, const auto &last) { changed(first.row(), last.row()); });
    QObject::connect(&model, &Model::modelAboutToBeReset, &m_context,
                     [this] { leaving(0, m_model.rowCount() - 1); });
    QObject::connect(&model, &Model::modelReset, &m_context,
                     [this] { arrived(0, m_model.rowCount() - 1); });
    m_selectionTicket = store.selection.subscribe(
        [this](const QSet<QUuid> &next) { selectionChanged(next); }, Deliver::ChangesOnly);
}

ItemListAccessible::List *ItemListAccessible::list() const
{
    if (!QAccessible::isActive())
        return nullptr;
    return static_cast<List *>(QAccessible::queryAccessibleInterface(&m_view));
}

void ItemListAccessible::arrived(int first, int last)
{
    List *list = this->list();
    for (int row = first; list && row <= std::min(last, first + mostTold - 1); ++row)
        tell(list->child(row), QAccessible::ObjectCreated);
}

void ItemListAccessible::leaving(int first, int last)
{
    List *list = this->list();
    for (int row = first; list && row <= last; ++row) {
        if (row - first < mostTold)
            tell(list->child(row), QAccessible::ObjectDestroyed);
        list->forget(m_model.item(row).id);
    }
}

void ItemListAccessible::changed(int first, int last)
{
    List *list = this->list();
    for (int row = first; list && row <= last; ++row) {
        if (auto *known = list->known(m_model.item(row).id)) {
            tell(known, QAccessible::NameChanged);
            tell(known, QAccessible::DescriptionChanged);
        }
    }
}

/// Told when it is stored: whoever hears of it reads the rows' states.
void ItemListAccessible::selectionChanged(const QSet<QUuid> &next)
{
    if (!QAccessible::isActive() || next == m_store.selection.value())
        return;
    if (!m_told)
        m_told = m_store.selection.value();
    m_queue.post([this, alive = std::weak_ptr(m_alive)] {
        List *list = alive.lock() ? this->list() : nullptr;
        if (!list || !m_told)
            return;
        const QSet<QUuid> &now = m_store.selection.value();
        auto changes = (now - *m_told).unite(*m_told - now);
        m_told.reset();
        if (changes.size() > mostTold) {
            tell(list, QAccessible::SelectionWithin);
            return;
        }
        for (const QUuid &id : std::as_const(changes)) {
            const int row = m_model.rowOf(id);
            if (row < 0)
                continue;
            QAccessible::State selected;
            selected.selected = true;
            QAccessibleInterface *about = list->child(row);
            tell(about,
                 now.contains(id) ? QAccessible::SelectionAdd : QAccessible::SelectionRemove);
            QAccessibleStateChangeEvent event(about, selected);
            QAccessible::updateAccessibility(&event);
        }
    });
}

void ItemListAccessible::focusChanged()
{
    List *list = this->list();
    if (QAccessibleInterface *row = list ? list->focusChild() : nullptr)
        tell(row, QAccessible::Focus);
}
