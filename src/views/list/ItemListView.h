#pragma once

#include "base/Ticket.h"
#include "panel/Animation.h"
#include "platform/Modifiers.h"
#include "views/list/ItemListAccessible.h"
#include "views/list/ItemListModel.h"
#include "views/list/ItemRowDelegate.h"
#include "views/list/RowMotion.h"
#include "views/list/RowThumbnails.h"
#include "views/look/Motion.h"

#include <QListView>

#include <functional>
#include <optional>
#include <vector>

class Localizer;
class MainQueue;
class ShelfStore;

/// EventModifier bits of a Qt event.
Modifiers eventModifiers(Qt::KeyboardModifiers modifiers);

/// The list of entries: rows of one height, their mouse behaviour, and the short
/// motion with which changes of the list are shown. It handles no keys, and a
/// press outside the rows is left to the widget around it.
///
/// Rows lie where arithmetic puts them, so that a list of any length costs only
/// what is visible.
class ItemListView final : public QListView
{
public:
    ItemListView(ShelfStore &store, const Localizer &texts, Icons &icons, Symbols &symbols,
                 MainQueue &queue, QWidget *parent = nullptr);

    /// A double click on a row.
    std::function<void(const ShelfItem &)> onActivate;
    /// A row's menu is asked for, at a place on the screen.
    std::function<void(const ShelfItem &, const QPoint &)> onMenu;
    /// Pointer or keyboard came to a row, so that its menu may be asked for soon.
    std::function<void(const ShelfItem &)> onNear;

    /// Shows a row's preview.
    std::function<void(const ShelfItem &)> onPreview;

    /// What an assistive program can ask of a row.
    enum class RowAction { Press, Toggle, Menu, Activate, Preview, Remove };
    bool canPerform(RowAction action) const;
    /// Soon, and only if the entry is still there.
    void perform(RowAction action, const QUuid &id);

    const ItemListModel &rows() const { return m_model; }
    ShelfStore &store() const { return m_store; }
    const Localizer &texts() const { return m_texts; }
    /// Whether keys come to the widget around the list, which lets them act on rows.
    bool hasKeyboard() const;
    /// The keyboard came to that widget.
    void keyboardCame() { m_accessible.focusChanged(); }

    /// The press has become a drag: its release, wherever it falls, is no click.
    void cancelPress();

    /// For the keyboard: the row that has the focus, brought into view.
    void askForMenu();

    void setMotion(Motion motion) { m_motion = motion; }
    /// From now on rows show pictures of their files. It outlives the view.
    void setThumbnails(Thumbnails &thumbnails);

    QRect visualRect(const QModelIndex &index) const override;
    QModelIndex indexAt(const QPoint &point) const override;
    void scrollTo(const QModelIndex &index, ScrollHint hint = EnsureVisible) override;
    void doItemsLayout() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void changeEvent(QEvent *event) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    int verticalOffset() const override;
    int horizontalOffset() const override { return 0; }

    bool viewportEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    /// A left press on a row, until its release.
    struct Press
    {
        enum class Part { Row, Button };
        enum class Count { Single, Double };

        Part part = Part::Row;
        QUuid id;
        QPoint at;
        Count count = Count::Single;
        bool moved = false;
    };

    int rowTop(int row) const; // In the contents.
    QRect rowRect(int row) const; // In the viewport.
    std::pair<int, int> visibleRows(int margin) const; // First and one past the last.
    RowLook lookOf(int row) const;

    void change(const QList<ShelfItem> &next);
    void animate(const QList<ShelfItem> &before, const RowChanges &changes, double scrolledBefore);
    void focusChanged();
    void comeNear(int row);

    void openMenu(int row);
    void beginPress(QMouseEvent *event, Press::Count count);
    void endPress(const Press &press, QMouseEvent *event);
    void setPointer(std::optional<QPoint> position);
    bool overButton(int row) const;

    ShelfStore &m_store;
    const Localizer &m_texts;
    MainQueue &m_queue;
    ItemListModel m_model;
    ItemRowDelegate *m_delegate;
    Motion m_motion = Motion::Full;

    std::optional<QPoint> m_pointer; // In the viewport, while it is there.
    QUuid m_shelf; // The one on show.
    bool m_endLanded = false; // On an empty shelf, whose list was not on show.
    std::optional<QUuid> m_near; // The row that onNear told last.
    std::optional<Press> m_press;
    std::optional<QUuid> m_lastClicked; // A double click counts where both clicks hit one row.

    RowThumbnails m_thumbnails;
    RowMotion m_rows;
    Animation m_scroll;
    ItemListAccessible m_accessible;

    std::vector<Ticket> m_subscriptions;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
