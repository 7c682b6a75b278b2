#include "store/ShelfStore.h"

#include "app/settings/Localizer.h"

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
}
