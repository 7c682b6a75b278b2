#pragma once

#include "app/settings/Localizer.h"
#include "base/AtomicFile.h"
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "platform/fake/FakeBookmarks.h"
#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "store/ShelfStore.h"
#include "store/StateCoding.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include <sys/stat.h>
#include <unistd.h>

/// A store over a home of its own, in virtual time. The store starts when it is
/// first asked for, so that a test can prepare the disk.
class World
{
public:
    World()
    {
        const QByteArray bundle = home() + "/Vantle_Vantle.bundle";
        write(bundle + "/en.lproj/Localizable.strings",
              R"("app_name" = "Vantle"; "dropped_text" = "Text snippet"; "dropped_link" = "Link";
            "dropped_image" = "Bild 1"; "demo_file_name" = "Try me"; "demo_file_content" = "Hello.";
            "removed_one_undo" = "one removed"; "removed_n_undo" = "%lld removed";
            "restored_n" = "%lld restored"; "shelf_numbered" = "Shelf %lld";
            "shelf_closed" = "%@ closed"; "moved_to" = "moved to %@";)");
        m_texts.emplace(QString::fromUtf8(bundle), QStringList());
    }

    ~World()
    {
        m_store.reset();
        NativeFile::remove(m_home.path().toUtf8()); // QTemporaryDir cannot spell every name.
    }

    ShelfStore &store()
    {
        if (!m_store)
            m_store.emplace(paths(), queue, workers, bookmarks, sounds, pictures, *m_texts);
        return *m_store;
    }

    /// As after the process was killed and started anew.
    ShelfStore &restart()
    {
        m_store.reset();
        sounds.played.clear();
        return store();
    }

    void end() { m_store.reset(); }

    AppPaths paths() const
    {
        Directories directories;
        directories.data = home() + spelling;
        return AppPaths(directories);
    }

    QByteArray home() const { return m_home.path().toUtf8(); }
    QByteArray data(const QByteArray &name) const { return paths().dataDir + '/' + name; }
    QByteArray dropped(const QByteArray &name) const { return data("dropped/" + name); }

    /// A file in the home, and its address.
    QUrl file(const QByteArray &name) const
    {
        write(home() + '/' + name, "content");
        return FilePath::toUrl(home() + '/' + name);
    }

    QList<QUrl> files(int count) const
    {
        QList<QUrl> urls;
        for (int i = 0; i < count; ++i)
            urls.append(file("file" + QByteArray::number(i)));
        return urls;
    }

    static void write(const QByteArray &path, const QByteArray &bytes)
    {
        NativeFile::makeFolder(FilePath::parent(path));
        EXPECT_TRUE(AtomicFile::write(path, bytes)) << path.constData();
    }

    void writeState(const ShelfState &state) const
    {
        write(data("shelves.json"), StateCoding::encode(state));
    }

    std::optional<ShelfState> savedState() const
    {
        return StateCoding::decodeState(saved().value_or(QByteArray()));
    }

    std::optional<QByteArray> saved() const { return NativeFile::read(data("shelves.json")).bytes; }

    /// "missing" where there is no such file.
    static QByteArray read(const QByteArray &path)
    {
        return NativeFile::read(path).bytes.value_or("missing");
    }

    /// The names in the folder "dropped", sorted.
    QList<QByteArray> droppedNames() const
    {
        auto names = NativeFile::namesIn(data("dropped"));
        std::sort(names.begin(), names.end());
        return names;
    }

    QList<QUrl> urls()
    {
        QList<QUrl> result;
        for (const ShelfItem &item : store().items.value())
            result.append(item.url);
        return result;
    }

    QUuid id(qsizetype index) { return store().items.value().at(index).id; }
    QString notice()
    {
        const auto last = store().notice.value();
        return last ? last->text : QString();
    }

    static ShelfItem item(const QUrl &url, double addedAt = 0)
    {
        ShelfItem made;
        made.id = QUuid::createUuid();
        made.url = url;
        made.addedAt = addedAt;
        made.bookmark = FakeBookmarks::bookmarkOf(FilePath::fromUrl(url));
        return made;
    }

    static Shelf shelf(const QList<ShelfItem> &items)
    {
        Shelf made;
        made.id = QUuid::createUuid();
        made.items = items;
        return made;
    }

    QByteArray spelling; // Of the folder for data: what follows the home.
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    FakeBookmarks bookmarks;
    FakeSounds sounds;
    FakePictureDecoder pictures;

private:
    /// In memory where that is possible: waiting for a disk is not what is tested.
    QTemporaryDir m_home { (access("/dev/shm", W_OK) == 0 ? QStringLiteral("/dev/shm")
                                                          : QDir::tempPath())
                           + QStringLiteral("/vantle-XXXXXX") };
    std::optional<Localizer> m_texts;
    std::optional<ShelfStore> m_store;
};
