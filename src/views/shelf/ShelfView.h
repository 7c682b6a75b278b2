#pragma once

#include "base/Ticket.h"
#include "panel/Animation.h"
#include "platform/DropTarget.h"
#include "platform/StatusItem.h"
#include "store/ShelfItem.h"
#include "views/list/RowMenu.h"
#include "views/look/Motion.h"
#include "views/look/Symbols.h"

#include <QList>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AppSettings;
class DragSession;
class DropOutline;
class EmptyState;
class Icons;
class ItemListView;
class Localizer;
class MainQueue;
class QStackedWidget;
class ShelfHeader;
class ShelfStore;
class Thumbnails;
class Toast;
struct QuickLookController;

/// The content of the panel: header, list or empty state, and above them the
/// toast and the outline of a drop. It shows what store and settings hold and
/// turns gestures into their operations; what is its own vanishes with it.
class ShelfView final : public QWidget
{
public:
    /// resources: the folder that holds the program's icons.
    ShelfView(ShelfStore &store, AppSettings &settings, const Localizer &texts,
              QuickLookController &ql, Icons &icons, DragSession &session, MainQueue &queue,
              const QString &resources, QWidget *parent = nullptr);
    ~ShelfView() override;

    /// A drag that would be taken hovers over the panel, or no longer does.
    void setTargeted(bool targeted);
    void handleDrop(const ItemProviders &providers);
    void showToast(const QString &text);
    /// For what came in some way and held nothing for a shelf.
    void showNothingTaken();
    bool saysNothingTaken() const;
    /// The selected entries, or all of them where none is selected.
    QList<ShelfItem> dragOutItems() const;
    /// Asks for another name of the current shelf.
    void rename();
    /// Asks for another name of the entry's file.
    void rename(const ShelfItem &item);
    /// A question stands over the rows, which nothing may change until it is answered.
    bool isAsking() const;
    /// Opens the entry in the way that the user prefers.
    void activate(const ShelfItem &item);
    /// Brings what the preview would show in line with the store.
    void syncQL();
    /// A press on a row has become a drag.
    void cancelPress();
    void setMotion(Motion motion);
    /// Rows show pictures of their files from now on. It outlives the view.
    void setThumbnails(Thumbnails &thumbnails);

    std::function<void()> onClose;
    /// It asks for something that is typed.
    std::function<void()> onNeedsKeyboard;
    /// The background was dragged: the window is to follow the pointer.
    std::function<void()> onMoveWindow;
    /// What a target took from the header's handle.
    std::function<void(const QList<Address> &)> onDraggedOut;
    /// What the preview would show has changed.
    std::function<void()> onPreviewItems;
    /// What the shelves' menu ends with, at the moment when it opens.
    std::function<QList<MenuEntry>()> moreEntries;
    /// What the desktop does with entries.
    RowActions actions;

    std::optional<QString> toastText() const;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    void connectHeader();
    void openShelfMenu();
    void connectRows();
    void preview(const ShelfItem &item);
    void subscribe();
    void refreshSoon();
    void refresh();
    void showContent();

    ShelfStore &m_store;
    AppSettings &m_settings;
    const Localizer &m_texts;
    QuickLookController &m_ql;
    MainQueue &m_queue;
    Symbols m_symbols;

    ShelfHeader *m_header;
    QStackedWidget *m_content;
    ItemListView *m_list;
    EmptyState *m_empty;
    DropOutline *m_outline;
    Toast *m_toast;

    RowMenu m_rowMenu;
    Motion m_motion = Motion::Full;
    Animation m_appear; // Of the empty state.
    std::optional<QPoint> m_backgroundPress;
    bool m_isMoving = false; // The window follows the pointer until the next press.
    bool m_refreshPending = false;
    std::vector<Ticket> m_subscriptions;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // Posted tasks ask it first.
};
