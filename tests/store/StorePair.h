#pragma once

#include "ModelStore.h"
#include "StoreWorld.h"

#include <array>

/// Keeps work until a test runs it.
class HeldWorkers final : public Workers
{
public:
    void run(WorkerPriority, std::function<void()> work) override { held.push_back(work); }
    std::vector<std::function<void()>> held;
};

/// A store and its model. Whoever does the same to both learns what differs then.
class StorePair
{
public:
    static constexpr int none = ModelState::none;
    using Numbers = ModelState::Numbers;

    explicit StorePair(World &home);

    World &world;
    ModelStore model;
    std::optional<ShelfStore> store;
    bool sameReturned = true;

    QUuid id(int entry) const { return entry < 0 ? m_unknown : m_entries.at(entry); }
    QUuid shelfId(int shelf) const { return shelf < 0 ? m_unknown : m_shelves.at(shelf); }
    QUrl url(int place) const { return place < 0 ? QUrl() : m_urls.at(place); }

    QSet<QUuid> ids(const Numbers &entries) const
    {
        QSet<QUuid> result;
        for (const int entry : entries)
            result.insert(id(entry));
        return result;
    }

    void restart(ModelStore::StateFile file);
    void runJob(int number);
    void toggleUpload(int entry);

    // Of the disk; to be followed by tellBookmarks.

    void createFile(int place);
    void deleteFile(int place);
    void moveFile(int from, int to);
    void tellBookmarks();

    /// Empty if nothing differs. Begins anew for the next operation.
    std::string difference();
    /// Only a test moves or deletes these.
    std::string differenceOfUsersFiles() const;

private:
    void addPlace(const QByteArray &path);
    /// The ids of what is new in the model, at the same position in the store.
    void learn(const ModelState::Shelves &wanted, const QList<Shelf> &list);
    /// A new file has a name that cannot be known before.
    QSet<QByteArray> learnFiles();
    ShelfItem item(const ModelState::Entry &entry) const;
    QList<Shelf> shelves(const ModelState::Shelves &list) const;
    std::pair<quint64, qint64> fileIdentity() const;
    std::string differenceOfFiles();
    std::string differenceOfState();
    std::string differenceOfSelection();
    std::string differenceOfEffects();

    const QByteArray m_statePath = world.data("shelves.json");
    const QByteArray m_dropped = world.data("dropped");
    HeldWorkers m_workers;
    const Localizer m_texts { QString::fromUtf8(world.home() + "/Vantle_Vantle.bundle"), {} };
    const QUuid m_unknown = QUuid::createUuid();
    std::vector<QUuid> m_entries, m_shelves; // By the model's numbers, as the next two.
    std::vector<QByteArray> m_paths;
    std::vector<QUrl> m_urls;
    QSet<QByteArray> m_places;
    std::set<QUuid> m_known;
    std::pair<quint64, qint64> m_file;
    Numbers m_present; // At the last look.
    int m_changes = 0;
    std::vector<Ticket> m_subscriptions;
    QList<ShelfItem> m_removed, m_restored;
    Numbers m_cancelled;
};
