#pragma once

#include "app/settings/AppSettings.h"
#include "app/settings/Localizer.h"
#include "gallery/Surroundings.h"
#include "platform/Icons.h"
#include "platform/fake/FakeAutostart.h"
#include "platform/fake/FakeBookmarks.h"
#include "platform/fake/FakeDragSession.h"
#include "platform/fake/FakePictureDecoder.h"
#include "platform/fake/FakePreferences.h"
#include "platform/fake/FakeSounds.h"
#include "platform/fake/VirtualQueue.h"
#include "store/ShelfStore.h"
#include "views/look/Symbols.h"

#include <QTemporaryDir>

/// Theme icons by name and kind; nothing is looked at.
class GalleryIcons final : public Icons
{
public:
    QIcon forFile(const QUrl &url) override;
    QIcon forWebLocation() override;
};

/// Everything that views ask for, over fakes and in virtual time.
class Stage
{
public:
    explicit Stage(const Surroundings &surroundings);

    /// An entry for a file that need not exist; a path that ends in "/" is a folder's.
    static ShelfItem item(const QString &path);
    static ShelfItem link();
    void fill(const QStringList &paths);
    /// A file of each kind.
    void fillUsual();
    /// Three more shelves, the second of them current, pins on two, and a closed one.
    void fillShelves();
    void select(std::initializer_list<int> rows);

    QString text(const char *key, const QVariantList &arguments = {}) const;

private:
    void setItems(const QList<ShelfItem> &items);

    QTemporaryDir m_home;
    FakePreferences m_preferences;
    FakeAutostart m_autostart;
    FakeBookmarks m_bookmarks;
    FakePictureDecoder m_pictures;

public:
    FakeSounds sounds;
    GalleryIcons icons;
    FakeDragSession session;
    Symbols symbols;
    VirtualQueue queue;
    VirtualWorkers workers { queue };
    Localizer texts;
    AppSettings settings;
    ShelfStore store;
};
