#include "views/shelf/ShelfView.h"

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "dragdrop/DroppedFiles.h"
#include "store/QuickLookController.h"
#include "store/ShelfStore.h"
#include "views/list/ItemListView.h"
#include "views/shelf/DropOutline.h"
#include "views/shelf/EmptyState.h"
#include "views/shelf/Prompt.h"
#include "views/shelf/RenamePrompt.h"
#include "views/shelf/ShelfHeader.h"
#include "views/shelf/ShelfMenu.h"
#include "views/shelf/Toast.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr QSize smallestPanel(210, 240);
constexpr double moveDistance = 3; // A shorter move of a press is a click.
constexpr double appearDuration = 0.2;

}

ShelfView::ShelfView(ShelfStore &store, AppSettings &settings, const Localizer &texts,
                     QuickLookController &ql, Icons &icons, DragSession &session, MainQueue &queue,
                     const QString &resources, QWidget *parent)
    : QWidget(parent)
    , m_store(store)
    , m_settings(settings)
    , m_texts(texts)
    , m_ql(ql)
    , m_queue(queue)
    , m_symbols(resources + QStringLiteral("/icons"))
    , m_header(new ShelfHeader(m_symbols, session, icons, texts, this))
    , m_content(new QStackedWidget(this))
    , m_list(new ItemListView(store, texts, icons, m_symbols, queue, m_content))
    , m_empty(new EmptyState(m_symbols, m_content))
    , m_outline(new DropOutline(queue, this))
    , m_toast(new Toast(queue, this))
    , m_rowMenu(store, texts, actions)
    , m_appear(queue)
{
    setMinimumSize(smallestPanel);
    // The keyboard comes here first, not to a button that a stray space would press.
    setFocusPolicy(Qt::StrongFocus);
    m_content->addWidget(m_list);
    m_content->addWidget(m_empty);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addWidget(m_content, 1);
    connectHeader();
    connectRows();
    subscribe();
    refresh();
    setFocus();
}

ShelfView::~ShelfView() = default;

void ShelfView::connectHeader()
{
    m_header->onClear = [this] { m_store.clear(); };
    m_header->onClose = [this] {
        if (onClose)
            onClose();
    };
    connect(&m_header->title(), &TitleButton::pressed, this, [this] { openShelfMenu(); });
    m_header->drag().urls = [this] {
        QList<Address> urls;
        for (const auto &item : dragOutItems())
            urls.append(item.target());
        return urls;
    };
    m_header->drag().onDraggedOut = [this](const QList<Address> &urls) {
        if (onDraggedOut)
            onDraggedOut(urls);
    };
}

/// Never waits for it: the menu acts by itself and goes when it closes.
void ShelfView::openShelfMenu()
{
    TitleButton &title = m_header->title();
    auto *menu = new ShelfMenu(m_store, m_texts, m_symbols, &title);
    if (moreEntries)
        menu->addMore(moreEntries());
    menu->onRename = [this] { rename(); };
    connect(menu, &QMenu::aboutToHide, &title, [&title] { title.setDown(false); });
    menu->popupBelow(title);
}

void ShelfView::rename()
{
    const Prompt::Request request { .message = m_texts.text(QStringLiteral("shelf_rename_title")),
                                    .text = m_store.currentTitle(),
                                    .accept = m_texts.text(QStringLiteral("rename_action")),
                                    .cancel = m_texts.text(QStringLiteral("cancel")) };
    Prompt::ask(this, request,
                [this, id = m_store.currentID.value(),
                 alive = std::weak_ptr(m_alive)](const std::optional<QString> &name) {
                    if (name && alive.lock())
                        m_store.renameShelf(id, *name);
                });
    if (onNeedsKeyboard)
        onNeedsKeyboard();
}

void ShelfView::connectRows()
{
    m_list->onActivate = [this](const ShelfItem &item) { activate(item); };
    m_list->onPreview = [this](const ShelfItem &item) { preview(item); };
    m_list->onNear = [this](const ShelfItem &item) {
        if (actions.apps)
            actions.apps(item.url);
    };
    m_list->onMenu
        = [this](const ShelfItem &item, const QPoint &at) { m_rowMenu.popup(item, at, this); };
    m_rowMenu.onActivate = m_list->onActivate;
    m_rowMenu.onRename = [this](const ShelfItem &item) { rename(item); };
    m_rowMenu.onToast = [this](const QString &text) { showToast(text); };
}

void ShelfView::rename(const ShelfItem &item)
{
    FileOps::promptRename(
        this, item.url, m_texts,
        [this, id = item.id, alive = std::weak_ptr(m_alive)](const QString &name) {
            if (!alive.lock())
                return;
            m_store.rename(id, name, [this, alive](const QString &reason) {
                if (alive.lock())
                    showToast(m_texts.text(QStringLiteral("rename_failed"), { reason }));
            });
        });
    if (onNeedsKeyboard)
        onNeedsKeyboard();
}

bool ShelfView::isAsking() const
{
    return Prompt::stands(*this);
}

void ShelfView::activate(const ShelfItem &item)
{
    const QString &action = m_settings.doubleClickAction.value();
    if (item.link || action == QLatin1String("open")) {
        if (actions.open)
            actions.open({ item.target() }, {});
    } else if (action == QLatin1String("reveal")) {
        if (actions.reveal)
            actions.reveal({ item.url });
    } else {
        preview(item);
    }
}

void ShelfView::preview(const ShelfItem &item)
{
    if (!m_store.selection.value().contains(item.id))
        m_store.click(item.id, 0);
    syncQL();
    if (actions.preview)
        actions.preview();
}

void ShelfView::subscribe()
{
    const auto refreshOn = [this](auto &observable) {
        m_subscriptions.push_back(
            observable.subscribe([this](const auto &) { refreshSoon(); }, Deliver::ChangesOnly));
    };
    refreshOn(m_store.items);
    refreshOn(m_store.selection);
    refreshOn(m_store.shelves);
    refreshOn(m_store.currentID);
    refreshOn(m_settings.language);
    m_subscriptions.push_back(m_store.notice.subscribe(
        [this](const std::optional<ShelfNotice> &notice) {
            if (notice)
                showToast(notice->text);
        },
        Deliver::ChangesOnly));
}

/// Subscribers are told before the value is stored, and one operation tells of
/// several: all of it is shown once, afterwards.
void ShelfView::refreshSoon()
{
    if (m_refreshPending)
        return;
    m_refreshPending = true;
    m_queue.post([this, alive = std::weak_ptr(m_alive)] {
        if (!alive.lock())
            return;
        m_refreshPending = false;
        refresh();
    });
}

void ShelfView::refresh()
{
    const bool selected = !m_store.selectedItems().isEmpty();
    const auto shelf = m_store.currentShelf();
    m_header->setContent(
        { m_store.currentTitle(),
          shelf && shelf->pinned ? TitleButton::Pin::Shown : TitleButton::Pin::Absent,
          selected ? DragHandle::Carries::Selection : DragHandle::Carries::Everything,
          static_cast<int>(dragOutItems().size()), m_store.items.value().isEmpty() });
    m_empty->setTexts(m_texts.text(QStringLiteral("empty_drop")),
                      m_texts.text(QStringLiteral("empty_hint")));
    setAccessibleName(m_store.currentTitle());
    m_list->setAccessibleName(m_store.currentTitle());
    showContent();
    syncQL();
}

void ShelfView::showContent()
{
    QWidget *next = m_store.items.value().isEmpty() ? static_cast<QWidget *>(m_empty) : m_list;
    if (m_content->currentWidget() == next)
        return;
    m_content->setCurrentWidget(next);
    if (next != m_empty || m_motion == Motion::Reduced || !isVisible()) {
        m_appear.cancel();
        m_empty->setOpacity(1);
        return;
    }
    m_empty->setOpacity(0);
    m_appear.begin(appearDuration, AnimationCurve::EaseOut,
                   [this](double progress) { m_empty->setOpacity(progress); });
}

void ShelfView::setMotion(Motion motion)
{
    m_motion = motion;
    m_list->setMotion(motion);
    m_outline->setMotion(motion);
    m_toast->setMotion(motion);
}

void ShelfView::cancelPress()
{
    m_list->cancelPress();
}

void ShelfView::setThumbnails(Thumbnails &thumbnails)
{
    m_list->setThumbnails(thumbnails);
}

void ShelfView::setTargeted(bool targeted)
{
    m_outline->setShown(targeted);
    m_empty->setTargeted(targeted);
}

void ShelfView::handleDrop(const ItemProviders &providers)
{
    ::handleDrop(providers, m_store, m_queue, m_alive, [this] { showNothingTaken(); });
}

void ShelfView::showNothingTaken()
{
    showToast(m_texts.text(QStringLiteral("nothing_taken")));
}

bool ShelfView::saysNothingTaken() const
{
    return toastText() == m_texts.text(QStringLiteral("nothing_taken"));
}

void ShelfView::showToast(const QString &text)
{
    m_toast->showText(text);
}

std::optional<QString> ShelfView::toastText() const
{
    return m_toast->text();
}

QList<ShelfItem> ShelfView::dragOutItems() const
{
    auto selected = m_store.selectedItems();
    return selected.isEmpty() ? m_store.items.value() : selected;
}

void ShelfView::syncQL()
{
    const auto &items = m_store.items.value();
    const auto selected = m_store.selectedItems();
    m_ql = {};
    for (const auto &item : selected.size() < 2 ? items : selected) {
        m_ql.urls.append(item.url);
        if (item.preview)
            m_ql.titles.insert(item.url, *item.preview);
    }
    if (selected.size() == 1) {
        const auto place = std::ranges::find(items, selected.first().id, &ShelfItem::id);
        m_ql.startIndex = static_cast<int>(place - items.begin());
    }
    if (onPreviewItems)
        onPreviewItems();
}

void ShelfView::resizeEvent(QResizeEvent *)
{
    m_outline->setGeometry(rect());
    m_toast->place();
}

void ShelfView::mousePressEvent(QMouseEvent *event)
{
    m_isMoving = false;
    m_backgroundPress.reset();
    if (event->button() == Qt::LeftButton)
        m_backgroundPress = event->position().toPoint();
    else
        event->ignore();
}

void ShelfView::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_backgroundPress || m_isMoving || !(event->buttons() & Qt::LeftButton))
        return;
    if (QLineF(*m_backgroundPress, event->position()).length() < moveDistance)
        return;
    m_isMoving = true;
    if (onMoveWindow)
        onMoveWindow();
}

void ShelfView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_backgroundPress)
        return;
    const QPoint press = *m_backgroundPress;
    m_backgroundPress.reset();
    if (!m_isMoving && m_content->currentWidget() == m_list
        && m_content->geometry().contains(press))
        m_store.deselectAll();
}

void ShelfView::contextMenuEvent(QContextMenuEvent *event)
{
    event->setAccepted(event->reason() == QContextMenuEvent::Keyboard);
    if (event->isAccepted() && m_content->currentWidget() == m_list)
        m_list->askForMenu();
}

void ShelfView::focusInEvent(QFocusEvent *event)
{
    QWidget::focusInEvent(event);
    // After the toolkit has told that it is this widget.
    m_queue.post([this, alive = std::weak_ptr(m_alive)] {
        if (alive.lock())
            m_list->keyboardCame();
    });
}

/// Keyboards without a menu key have this combination for it.
void ShelfView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_F10 || event->modifiers() != Qt::ShiftModifier)
        return QWidget::keyPressEvent(event);
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, QPoint(), mapToGlobal(QPoint()));
    QCoreApplication::sendEvent(this, &menu);
}
