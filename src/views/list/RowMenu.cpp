#include "views/list/RowMenu.h"

#include "app/settings/Localizer.h"
#include "store/ShelfStore.h"
#include "views/look/MenuLabel.h"

#include <QDir>
#include <QIcon>
#include <QMenu>
#include <QMimeDatabase>

#include <algorithm>

namespace {

using Entry = RowMenu::Entry;

/// Before these the menu has a line.
bool beginsGroup(Entry entry)
{
    return entry == Entry::Copy || entry == Entry::Upload || entry == Entry::Remove;
}

bool isWebLink(const ShelfItem &item)
{
    return item.link.has_value();
}

/// By the name alone: a menu must not wait for a disk.
bool isImage(const ShelfItem &item)
{
    return QMimeDatabase()
        .mimeTypeForFile(item.url.fileName(), QMimeDatabase::MatchExtension)
        .name()
        .startsWith(QLatin1String("image/"));
}

QIcon iconOf(const OpenWithApp &app)
{
    return QDir::isAbsolutePath(app.icon) ? QIcon(app.icon) : QIcon::fromTheme(app.icon);
}

QList<Address> urlsOf(const QList<ShelfItem> &items)
{
    QList<Address> urls;
    for (const ShelfItem &item : items)
        urls.append(item.url);
    return urls;
}

QSet<QUuid> idsOf(const QList<ShelfItem> &items)
{
    QSet<QUuid> ids;
    for (const ShelfItem &item : items)
        ids.insert(item.id);
    return ids;
}

}

RowMenu::RowMenu(ShelfStore &store, const Localizer &texts, const RowActions &actions)
    : m_store(store)
    , m_texts(texts)
    , m_actions(actions)
{
}

bool RowMenu::applies(Entry entry, const ShelfItem &item, const QList<ShelfItem> &targets)
{
    switch (entry) {
    case Entry::Reveal:
        return !std::ranges::all_of(targets, isWebLink);
    case Entry::Rename:
        return targets.size() <= 1 && !isWebLink(item);
    case Entry::ImageResize:
    case Entry::ImageConvert:
    case Entry::ImageRemoveBackground:
    case Entry::ImageMakePdf:
        return std::ranges::all_of(targets, isImage);
    case Entry::Upload:
        return !std::ranges::all_of(targets, [](const auto &t) { return bool(t.driveFileId); });
    case Entry::CopyLink:
    case Entry::OpenLink:
        return std::ranges::any_of(targets, [](const auto &t) { return bool(t.driveLink); });
    case Entry::CloudDelete:
        return std::ranges::any_of(targets, [](const auto &t) { return bool(t.driveFileId); });
    default:
        return true;
    }
}

void RowMenu::popup(const ShelfItem &item, const QPoint &at, QWidget *over)
{
    auto *menu = new QMenu(over);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // Else a list of shelves taller than the screen breaks into columns.
    menu->setStyleSheet(QStringLiteral("QMenu { menu-scrollable: 1; }"));
    fill(*menu, item);
    menu->popup(at);
}

void RowMenu::fill(QMenu &menu, const ShelfItem &item)
{
    const QList<ShelfItem> targets = m_store.targets(item);
    for (int place = 0; place <= static_cast<int>(Entry::Remove); ++place) {
        const auto entry = static_cast<Entry>(place);
        if (beginsGroup(entry))
            menu.addSeparator(); // Two in a row show as one.
        if (applies(entry, item, targets))
            add(entry, menu, item, targets);
    }
}

void RowMenu::add(Entry entry, QMenu &menu, const ShelfItem &item, const QList<ShelfItem> &targets)
{
    const auto offer = [&menu](const QString &text, auto action) {
        menu.addAction(text, &menu, std::move(action));
    };
    const QList<Address> urls = urlsOf(targets);
    switch (entry) {
    case Entry::Open:
        if (m_actions.open)
            offer(m_texts.text(QStringLiteral("open")), [this, urls] { m_actions.open(urls, {}); });
        break;
    case Entry::OpenWith:
        addOpenWith(menu, item, urls);
        break;
    case Entry::QuickLook:
        if (m_actions.preview)
            offer(m_texts.text(QStringLiteral("quick_look")), [this, item] { onActivate(item); });
        break;
    case Entry::Reveal:
        if (m_actions.reveal)
            offer(m_texts.text(QStringLiteral("reveal_finder")),
                  [this, urls] { m_actions.reveal(QList<QUrl>(urls.begin(), urls.end())); });
        break;
    case Entry::Rename:
        offer(m_texts.text(QStringLiteral("rename_menu")), [this, item] { onRename(item); });
        break;
    case Entry::Copy:
        if (m_actions.copyText)
            offer(std::ranges::all_of(targets, isWebLink)
                      ? m_texts.text(QStringLiteral("copy_web_link"))
                      : m_texts.text(QStringLiteral("copy_path")),
                  [this, targets] { copy(targets); });
        break;
    case Entry::SaveToShelf:
        addShelves(menu, targets);
        break;
    case Entry::Remove:
        addRemove(menu, targets);
        break;
    default:
        break;
    }
}

void RowMenu::addOpenWith(QMenu &menu, const ShelfItem &item, const QList<Address> &urls)
{
    const auto apps
        = m_actions.apps && m_actions.open ? m_actions.apps(item.url) : QList<OpenWithApp>();
    if (apps.isEmpty())
        return;
    QMenu *submenu = menu.addMenu(m_texts.text(QStringLiteral("open_with")));
    for (const OpenWithApp &app : apps)
        submenu->addAction(iconOf(app), menuLabel(app.name), submenu,
                           [this, urls, app] { m_actions.open(urls, app.identifier); });
}

void RowMenu::addShelves(QMenu &menu, const QList<ShelfItem> &targets)
{
    QMenu *submenu = menu.addMenu(m_texts.text(QStringLiteral("save_to_shelf")));
    const auto offer = [&](const QString &text, const std::optional<QUuid> &shelf) {
        submenu->addAction(text, submenu,
                           [this, ids = idsOf(targets), shelf] { m_store.move(ids, shelf); });
    };
    for (const ShelfInfo &shelf : m_store.shelfInfos()) {
        if (shelf.id != m_store.currentID.value())
            offer(menuLabel(shelf.title), shelf.id);
    }
    if (!submenu->isEmpty())
        submenu->addSeparator();
    offer(m_texts.text(QStringLiteral("move_to_new_shelf")), std::nullopt);
}

void RowMenu::addRemove(QMenu &menu, const QList<ShelfItem> &targets)
{
    menu.addAction(targets.size() == 1
                       ? m_texts.text(QStringLiteral("remove"))
                       : m_texts.text(QStringLiteral("remove_n"), { targets.size() }),
                   &menu, [this, ids = idsOf(targets)] { m_store.removeIds(ids); });
}

void RowMenu::copy(const QList<ShelfItem> &targets) const
{
    QList<Address> urls;
    for (const ShelfItem &item : targets)
        urls.append(item.target());
    m_actions.copyText(urls);
    onToast(std::ranges::all_of(targets, isWebLink) ? m_texts.text(QStringLiteral("link_copied"))
                                                    : m_texts.text(QStringLiteral("copied")));
}
