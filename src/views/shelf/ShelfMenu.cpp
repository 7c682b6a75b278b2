#include "views/shelf/ShelfMenu.h"

#include "app/settings/Localizer.h"
#include "app/settings/ShortcutText.h"
#include "store/ShelfStore.h"
#include "views/look/Look.h"
#include "views/look/MenuLabel.h"
#include "views/look/Symbols.h"

#include <QPaintEvent>
#include <QPainter>
#include <QStyle>

namespace {
constexpr int widestTitle = 260; // At the usual size of texts.
constexpr int pinSize = 12;
constexpr int pinMargin = 6; // To the entry's trailing edge.
}

ShelfMenu::ShelfMenu(ShelfStore &store, const Localizer &texts, Symbols &symbols, QWidget *parent)
    : QMenu(parent)
    , m_store(store)
    , m_texts(texts)
    , m_symbols(symbols)
{
    // Else a menu taller than the screen breaks into columns.
    setStyleSheet(QStringLiteral("QMenu { menu-scrollable: 1; }"));
    setAttribute(Qt::WA_DeleteOnClose);
    // A press on the button below only closes the menu.
    setAttribute(Qt::WA_NoMouseReplay);
    // The toolkit forgets to scroll when the arrow keys go round the end. Afterwards:
    // it tells of the entry before it has finished with it.
    connect(
        this, &QMenu::hovered, this,
        [this](QAction *entry) {
            if (entry == activeAction() && !rect().contains(actionGeometry(entry).center()))
                setActiveAction(entry);
        },
        Qt::QueuedConnection);
    setAccessibleName(texts.text(QStringLiteral("shelf_menu_help")));
    for (const ShelfInfo &info : store.shelfInfos())
        addShelf(info);
    addSeparator();
    addCommands();
    if (!store.closed.value().isEmpty())
        addClosed();
}

QString ShelfMenu::label(const QString &title) const
{
    return menuLabel(
        fontMetrics().elidedText(title, Qt::ElideMiddle, qRound(widestTitle * Look::textScale)));
}

void ShelfMenu::addShelf(const ShelfInfo &info)
{
    auto *entry = addAction(label(info.title) + QStringLiteral("  ") + QString::number(info.count),
                            this, [this, id = info.id] { m_store.switchTo(id); });
    // Only the current one: the empty boxes of the others would ask to be ticked.
    const bool isCurrent = info.id == m_store.currentID.value();
    entry->setCheckable(isCurrent);
    entry->setChecked(isCurrent);
    if (info.pinned)
        m_pinned.insert(entry);
}

void ShelfMenu::addCommands()
{
    const QUuid current = m_store.currentID.value();
    const auto shelf = m_store.currentShelf();
    // The key is shown only: the panel's own table of keys acts on it.
    addAction(m_texts.text(QStringLiteral("shelf_new")) + u'\t'
                  + shortcutText(QStringLiteral("⌘T"), m_texts),
              this, [this] { m_store.newShelf(); });
    addAction(m_texts.text(QStringLiteral("shelf_rename")), this, [this] {
        if (onRename)
            onRename();
    });
    addAction(m_texts.text(shelf && shelf->pinned ? QStringLiteral("shelf_unpin")
                                                  : QStringLiteral("shelf_pin")),
              this, [this, current] { m_store.togglePin(current); });
    addAction(m_texts.text(QStringLiteral("shelf_close")), this, [this, current] {
        m_store.closeShelf(current);
    })->setEnabled(m_store.shelves.value().size() > 1);
}

void ShelfMenu::addClosed()
{
    auto *recent = addMenu(m_texts.text(QStringLiteral("shelf_recent")));
    for (const Shelf &shelf : m_store.closed.value())
        recent->addAction(label(m_store.title(shelf)), this,
                          [this, id = shelf.id] { m_store.reopenShelf(id); });
}

void ShelfMenu::addMore(const QList<MenuEntry> &entries)
{
    if (!entries.isEmpty())
        addSeparator();
    for (const MenuEntry &entry : entries)
        addAction(menuLabel(entry.title), this, entry.action);
}

void ShelfMenu::popupBelow(const QWidget &widget)
{
    QPoint at = widget.rect().bottomLeft();
    if (isRightToLeft())
        at.setX(widget.width() - sizeHint().width());
    popup(widget.mapToGlobal(at + QPoint(0, 3)));
}

/// Without the arrows above and below the entries of a menu that is too long.
QRect ShelfMenu::scrolledArea() const
{
    const int arrow = style()->pixelMetric(QStyle::PM_MenuScrollerHeight, nullptr, this);
    const bool up = actionGeometry(actions().first()).top() < 0;
    const bool down = actionGeometry(actions().last()).bottom() > height();
    return rect().adjusted(0, up ? arrow : 0, 0, down ? -arrow : 0);
}

/// The pins stand where other entries show their keys, which is room that no
/// title takes; a menu style has one place for an icon, and the check mark needs it.
void ShelfMenu::paintEvent(QPaintEvent *event)
{
    QMenu::paintEvent(event);
    QPainter painter(this);
    painter.setClipRect(scrolledArea());
    for (const QAction *entry : actions()) {
        const QRect row = actionGeometry(const_cast<QAction *>(entry));
        if (!m_pinned.contains(entry) || !event->rect().intersects(row))
            continue;
        const QRect place(row.right() - pinMargin - pinSize, row.top(), pinSize, row.height());
        const auto role
            = activeAction() == entry ? QPalette::HighlightedText : QPalette::WindowText;
        m_symbols.paint(painter, Symbol::Pin, QStyle::visualRect(layoutDirection(), row, place),
                        pinSize, palette().color(role));
    }
}
