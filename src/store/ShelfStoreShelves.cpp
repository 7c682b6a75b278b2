#include "store/ShelfStore.h"

#include "app/settings/Localizer.h"
#include "store/Addresses.h"
#include "store/Characters.h"

#include <algorithm>
#include <utility>

namespace {

constexpr qsizetype longestName = 40;
constexpr qsizetype mostClosed = 5;

QSet<QUuid> idsOf(const QList<ShelfItem> &items)
{
    QSet<QUuid> ids;
    for (const ShelfItem &item : items)
        ids.insert(item.id);
    return ids;
}

}

QList<ShelfInfo> ShelfStore::shelfInfos() const
{
    QList<ShelfInfo> infos;
    for (const Shelf &shelf : shelves.value())
        infos.append(
            { shelf.id, title(shelf), static_cast<int>(shelf.items.size()), shelf.pinned });
    return infos;
}

std::optional<Shelf> ShelfStore::currentShelf() const
{
    const qsizetype index = shelfIndex(currentID.value());
    return index < 0 ? std::nullopt : std::optional(shelves.value().at(index));
}

QString ShelfStore::currentTitle() const
{
    return title(currentShelf().value_or(Shelf()));
}

QString ShelfStore::title(const Shelf &shelf) const
{
    return shelf.name ? *shelf.name : m_texts.text(QStringLiteral("app_name"));
}

void ShelfStore::switchTo(const QUuid &given)
{
    const QUuid id = given; // It may stand in the list of shelves, which changes on the way.
    if (id == currentID.value() || shelfIndex(id) < 0)
        return;
    mirrorCurrent();
    currentID.set(id);
    deselectAll();
    pressedID.reset();
    commit(shelves.value().at(shelfIndex(id)).items);
    refreshLocationsInBackground();
}

void ShelfStore::switchToIndex(qsizetype index)
{
    if (index >= 0 && index < shelves.value().size())
        switchTo(shelves.value().at(index).id);
}

void ShelfStore::newShelf()
{
    const Shelf made = numberedShelf();
    shelves.set(shelves.value() + QList { made });
    switchTo(made.id);
}

Shelf ShelfStore::numberedShelf() const
{
    Shelf shelf;
    shelf.id = QUuid::createUuid();
    shelf.name = nextShelfName();
    return shelf;
}

/// Counts from the number of shelves that there will be, past the names that
/// open and closed ones have.
QString ShelfStore::nextShelfName() const
{
    QSet<QString> taken;
    for (const auto *list : { &shelves.value(), &closed.value() }) {
        for (const Shelf &shelf : *list)
            taken.insert(title(shelf));
    }
    QString name;
    for (qint64 number = shelves.value().size() + 1;; ++number) {
        QString next = m_texts.text(QStringLiteral("shelf_numbered"), { number });
        // A translation that has lost its number would never end.
        if (!taken.contains(next) || next == name)
            return next;
        name = std::move(next);
    }
}

void ShelfStore::renameShelf(const QUuid &id, const QString &text)
{
    // Half a character of two parts could not be written.
    const QString trimmed = QString::fromUtf8(text.toUtf8()).trimmed();
    const qsizetype index = shelfIndex(id);
    if (trimmed.isEmpty() || index < 0)
        return;
    auto next = shelves.value();
    next[index].name = Characters::first(trimmed, longestName);
    shelves.set(std::move(next));
    save();
}

void ShelfStore::togglePin(const QUuid &id)
{
    const qsizetype index = shelfIndex(id);
    if (index < 0)
        return;
    auto next = shelves.value();
    next[index].pinned = !next.at(index).pinned;
    shelves.set(std::move(next));
    save();
}

void ShelfStore::closeShelf(const QUuid &given)
{
    const QUuid id = given; // It may stand in the list that changes on the way.
    const qsizetype index = shelfIndex(id);
    if (shelves.value().size() < 2 || index < 0)
        return;
    if (id == currentID.value()) {
        const bool last = index == shelves.value().size() - 1;
        switchToIndex(last ? index - 1 : index + 1);
    }
    auto next = shelves.value();
    Shelf shelf = next.takeAt(index);
    shelves.set(std::move(next));
    if (shelf.items.isEmpty())
        save();
    else
        keepClosed(std::move(shelf));
}

void ShelfStore::keepClosed(Shelf shelf)
{
    forgetUploads(idsOf(shelf.items));
    shelf.closedAt = m_queue.now();
    const QString name = title(shelf);
    auto next = closed.value();
    next.prepend(std::move(shelf));
    QList<ShelfItem> ended;
    while (next.size() > mostClosed)
        ended += next.takeLast().items;
    closed.set(std::move(next));
    publish(m_texts.text(QStringLiteral("shelf_closed"), { name }));
    save();
    discardManaged(ended);
}

void ShelfStore::reopenShelf(const QUuid &given)
{
    auto rest = closed.value();
    const auto found = std::find_if(rest.begin(), rest.end(),
                                    [&](const Shelf &shelf) { return shelf.id == given; });
    if (found == rest.end())
        return;
    QList<Shelf> reopened { *found };
    rest.erase(found);
    closed.set(std::move(rest));
    reopened.first().closedAt.reset();
    Locating::keepLocated(m_bookmarks, reopened);
    const QUuid id = reopened.first().id;
    shelves.set(shelves.value() + reopened);
    switchTo(id);
}

void ShelfStore::move(const QSet<QUuid> &given, const std::optional<QUuid> &destination)
{
    const QSet<QUuid> ids = given; // NOLINT(performance-unnecessary-copy-initialization)
    QList<ShelfItem> moving;
    QList<ShelfItem> rest;
    for (const ShelfItem &item : items.value())
        (ids.contains(item.id) ? moving : rest).append(item);
    if (moving.isEmpty() || destination == currentID.value())
        return;
    auto next = shelves.value();
    if (!destination)
        next.append(numberedShelf());
    const qsizetype index = destination ? shelfIndex(*destination) : next.size() - 1;
    if (index < 0)
        return;
    Shelf &target = next[index];
    const auto known = Addresses::keys(target.items);
    for (const ShelfItem &item : std::as_const(moving)) {
        if (!known.contains(Addresses::key(item.url)))
            target.items.append(item);
    }
    const QString name = title(target);
    shelves.set(std::move(next));
    items.set(std::move(rest));
    mirrorCurrent();
    deselect(ids);
    save();
    m_sounds.play(Sound::Pop);
    publish(m_texts.text(QStringLiteral("moved_to"), { name }));
}
