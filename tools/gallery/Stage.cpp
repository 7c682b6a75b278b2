#include "gallery/Stage.h"

#include "base/FilePath.h"

#include <QMimeDatabase>

QIcon GalleryIcons::forFile(const QUrl &url)
{
    if (url.path().endsWith(u'/'))
        return QIcon::fromTheme(QStringLiteral("folder"));
    const auto type = QMimeDatabase().mimeTypeForFile(url.path(), QMimeDatabase::MatchExtension);
    return QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
}

QIcon GalleryIcons::forWebLocation()
{
    return QIcon::fromTheme(QStringLiteral("text-html"));
}

Stage::Stage(const Surroundings &surroundings)
    : symbols(Gallery::resources() + QStringLiteral("/icons"))
    , texts(Localizer::findBundle({ Gallery::resources() }).value_or(QString()), {})
    , settings(m_preferences, m_autostart, texts, {})
    , store(AppPaths(Directories { {}, m_home.path().toUtf8(), {}, {}, {}, {}, {} }), queue,
            workers, m_bookmarks, sounds, m_pictures, texts)
{
    settings.language.set(surroundings.language);
}

ShelfItem Stage::item(const QString &path)
{
    ShelfItem result;
    result.id = QUuid::createUuid();
    result.url = FilePath::toUrl(
        path.toUtf8(), path.endsWith(u'/') ? FilePath::Kind::Directory : FilePath::Kind::File);
    return result;
}

ShelfItem Stage::link()
{
    auto result = item(QStringLiteral("/tmp/link.webloc"));
    result.link = QUrl(QStringLiteral("https://www.debian.org/releases/stable/"));
    result.preview = QStringLiteral("debian.org/releases/stable");
    return result;
}

/// As those of a shelf that is opened, which shows its head; what lands would be scrolled to.
void Stage::setItems(const QList<ShelfItem> &items)
{
    const QUuid current = store.currentID.value();
    store.currentID.set({});
    store.items.set(items);
    store.currentID.set(current);
}

void Stage::fill(const QStringList &paths)
{
    QList<ShelfItem> items;
    for (const auto &path : paths)
        items.append(item(path));
    setItems(items);
}

void Stage::fillUsual()
{
    auto text = item(QStringLiteral("/home/ada/.local/share/Vantle/dropped/Text snippet.txt"));
    text.preview = QStringLiteral("Remember to ask about the train tickets");
    setItems({ item(QStringLiteral("/home/ada/Documents/Annual report 2023.pdf")),
               item(QStringLiteral("/home/ada/Pictures/Lisbon/IMG_4471.jpg")),
               item(QStringLiteral("/home/ada/Projects/website/")), link(), text,
               item(QStringLiteral("/home/ada/Music/Quartet in C minor.flac")),
               item(QStringLiteral("/home/ada/Downloads/backup-2024-05-01.tar.gz")) });
}

void Stage::fillShelves()
{
    const QString names[] = { QStringLiteral("Holiday pictures"), QStringLiteral("R&D"),
                              QStringLiteral("Everything that the tax office asked for") };
    store.newShelf();
    store.newShelf();
    for (int i = 0; i < 3; ++i) {
        store.renameShelf(store.shelves.value().at(i).id, names[i]);
        store.switchToIndex(i);
        store.add({ QUrl(QStringLiteral("file:///home/ada/%1.txt").arg(i)) });
    }
    store.newShelf();
    store.add({ QUrl(QStringLiteral("file:///home/ada/old.txt")) });
    store.closeShelf(store.currentID.value());
    store.switchToIndex(1);
    store.togglePin(store.shelves.value().at(0).id);
    store.togglePin(store.shelves.value().at(1).id);
}

void Stage::select(std::initializer_list<int> rows)
{
    QSet<QUuid> ids;
    for (const int row : rows)
        ids.insert(store.items.value()[row].id);
    store.selection.set(ids);
}

QString Stage::text(const char *key, const QVariantList &arguments) const
{
    const QString name = QLatin1String(key);
    return arguments.isEmpty() ? texts.text(name) : texts.text(name, arguments);
}
