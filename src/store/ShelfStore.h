#pragma once

#include "base/MainQueue.h"
#include "base/Observable.h"
#include "base/Workers.h"
#include "platform/Modifiers.h"
#include "platform/Sounds.h"
#include "store/AppPaths.h"
#include "store/Locating.h"
#include "store/Shelf.h"
#include "store/StateEncoder.h"

#include <QHash>
#include <QImage>
#include <QMimeType>
#include <QSet>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

class Bookmarks;
class Localizer;
class PictureDecoder;

/// The one owner of all shelf data. Every operation changes `items` first, then
/// mirrors it into `shelves`, then saves, and publishes its notice last; saving
/// is synchronous, so the state on disk follows every persistent change and
/// nothing is left to do at the end of the process.
///
/// Unknown ids are ignored; failures of the disk are swallowed, and memory stays
/// authoritative. Main thread only.
class ShelfStore
{
public:
    /// Loads the state of the data folder, or makes one empty shelf.
    ShelfStore(AppPaths paths, MainQueue &queue, Workers &workers, Bookmarks &bookmarks,
               Sounds &sounds, PictureDecoder &pictures, const Localizer &texts);
    ~ShelfStore();
    ShelfStore(const ShelfStore &) = delete;
    ShelfStore &operator=(const ShelfStore &) = delete;

    // What views show. Written by the operations below only.
    Observable<QList<ShelfItem>> items; // The working list of the current shelf.
    Observable<QList<Shelf>> shelves; // Open shelves; the current one equals `items`.
    Observable<QUuid> currentID;
    Observable<QList<Shelf>> closed;
    Observable<QSet<QUuid>> uploading;
    Observable<QHash<QUuid, double>> progress; // 0 to 1, by entry.
    Observable<QSet<QUuid>> selection; // May hold ids that have no entry any more.
    Observable<std::optional<QUuid>> focus; // Moving end of a range, and the keyboard's row.
    Observable<std::optional<ShelfNotice>> notice;

    std::optional<QUuid> pressedID; // The row under a press that may become a drag.
    std::function<void(const QList<ShelfItem> &)> onRemoved;
    std::function<void(const QList<ShelfItem> &)> onRestored;

    // Adding: always at the end of the current shelf.

    /// References to the user's own files, each address once.
    void add(const QList<QUrl> &urls);
    /// A snippet, or a link where the text is nothing but a web address.
    void addText(const QString &text);
    void addLink(const WebAddress &address);
    /// Both write their file on a worker and then add it. Where nothing comes of it, onAdded goes
    /// without having been called.
    void addImage(const QImage &image);
    void addImageData(const QByteArray &data, const QMimeType &type,
                      std::function<void()> onAdded = {});
    /// The host without "www." and the path; at most 80 characters.
    static QString linkTitle(const WebAddress &address);
    /// The sample file of the tour; made where it is missing.
    QUrl makeDemoFile();

    // Removing: entries leave at once, and undo brings them back for 60 seconds.

    void removeIds(const QSet<QUuid> &given);
    /// Matches an entry's file as well as its web address.
    void removeUrls(const QList<Address> &urls);
    void clear();
    /// Whether entries came back.
    bool undoRemove();
    /// Removes for good what is older than that many seconds on open shelves that are not pinned.
    void pruneExpired(double maxAge);

    // Shelves: at least one is open, and of the closed ones the newest five are kept.

    QList<ShelfInfo> shelfInfos() const;
    std::optional<Shelf> currentShelf() const;
    QString currentTitle() const;
    QString title(const Shelf &shelf) const;
    void switchTo(const QUuid &given);
    void switchToIndex(qsizetype index);
    /// Empty and numbered; it becomes the current one.
    void newShelf();
    /// Trimmed and cut to 40 characters; blanks alone are no name.
    void renameShelf(const QUuid &id, const QString &text);
    void togglePin(const QUuid &id);
    void closeShelf(const QUuid &given);
    /// Without the entries whose file is gone, at the end of the open ones, and current.
    void reopenShelf(const QUuid &given);
    /// Entries of the current shelf to another open one, or to a new one that does not become
    /// current. What the destination has already leaves all the same.
    void move(const QSet<QUuid> &given, const std::optional<QUuid> &destination);

    // Files that move.

    /// Gives an entry's file another name in its folder, on a worker; no file is ever
    /// replaced. The reason, where that fails: then nothing has changed.
    void rename(const QUuid &id, const QString &name,
                std::function<void(const QString &reason)> onFailure);

    /// Looks for the files of the current shelf on a worker: entries follow theirs. Those whose
    /// file was thrown away, or that two successive checks 2 seconds apart find nowhere, leave
    /// quietly. One check at a time; a request during one is dropped.
    void refreshLocationsInBackground();

    // Selection: never persisted.

    /// A click with EventModifier bits.
    void click(const QUuid &id, Modifiers modifiers);
    enum class Extend { No, Yes };
    void moveSelection(int step, Extend extend);
    void selectAll();
    void deselectAll();
    QList<ShelfItem> selectedItems() const;
    /// What a command given on one row acts on: the selection if the row is part
    /// of one of several, else the row alone.
    QList<ShelfItem> targets(const ShelfItem &item) const;
    /// What a drag from the pressed row carries; none without such a row.
    std::optional<QList<Address>> dragURLs() const;

    /// Files of the store's own: deleted with their entry, and never any other.
    bool isManaged(const QUrl &url) const;

    /// Cancels the transfer of an entry that leaves; set by whoever starts one.
    QHash<QUuid, std::function<void()>> uploadCancels;

private:
    using Removed = std::pair<qsizetype, ShelfItem>; // Position before the removal.
    enum class Loaded { Nothing, State };

    Loaded load();
    /// And what the file holds.
    std::optional<ShelfState> readState(QByteArray &bytes);
    QByteArrayList encoded();
    void adopt(QList<Shelf> open, QList<Shelf> closedShelves, const QUuid &current);
    bool save();
    void mirrorCurrent();
    void sweepOrphans() const;
    QList<ShelfItem> rehome(QList<ShelfItem> list) const;
    void discardManaged(const QList<ShelfItem> &list) const;
    using Missed = QHash<QUuid, std::pair<QUrl, double>>; // Address then, and when it was missed.
    bool counts(const LocateResult &result, double begin, Missed &missed) const;
    void applyLocations(const QList<LocateResult> &results, double begin);
    void applyRename(const QUuid &id, const QUrl &before, const Bookmarked &now);
    QByteArray droppedDir() const { return m_paths.dataDir + "/dropped"; }

    void commit(QList<ShelfItem> next);
    ShelfItem newItem(const QUrl &url) const;
    void insertDropped(const QByteArray &path, const std::optional<QString> &preview = std::nullopt,
                       const std::optional<WebAddress> &link = std::nullopt);
    QByteArray fileStart(const QString &key) const;
    using Bytes = std::function<void(const std::optional<QByteArray> &)>;
    Bytes addingImage(const QString &extension, std::function<void()> onAdded = {});

    void forgetUploads(const QSet<QUuid> &ids);
    void deselect(const QSet<QUuid> &ids);
    void stashForUndo(QList<Removed> removed);
    void commitRemoval();
    QList<ShelfItem> putBack(const QList<Removed> &removed);
    QList<ShelfItem> takeExpiredElsewhere(double cutoff);
    QList<ShelfItem> takeExpiredHere(double cutoff);
    QList<ShelfItem> takeExpired(QList<ShelfItem> &list, double cutoff) const;
    void publish(const QString &text);

    qsizetype itemIndex(const std::optional<QUuid> &id) const;
    qsizetype shelfIndex(const QUuid &id) const;
    void selectRange(qsizetype from, qsizetype to);
    Shelf numberedShelf() const;
    QString nextShelfName() const;
    void keepClosed(Shelf shelf);

    AppPaths m_paths;
    MainQueue &m_queue;
    Workers &m_workers;
    Bookmarks &m_bookmarks;
    Sounds &m_sounds;
    PictureDecoder &m_pictures;
    const Localizer &m_texts;

    std::optional<QUuid> m_anchor; // Fixed end of a range.
    int m_noticeSeq = 0;
    StateEncoder m_encoder; // Of the state file.
    bool m_isSaved = true; // The file on disk names no entry that has left.
    bool m_isDamaged = false; // That file could not be read: the next save sets it aside.
    bool m_refreshingLocations = false;
    Missed m_missed; // By the last check.
    QList<Removed> m_lastRemoved; // The one stash.
    std::optional<QUuid> m_lastRemovedShelf;
    Ticket m_purge;
    // Results that come back later ask it first.
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
