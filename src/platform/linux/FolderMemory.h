#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>

#include <mutex>

/// What the kernel told about names in the folders of the files that are
/// followed. It keeps no thread and wakes nobody: the kernel's queue is emptied
/// when a check asks. Everything here is a hint about a path; who uses it looks
/// at the file. Any thread.
class FolderMemory
{
public:
    explicit FolderMemory(qsizetype mostFolders);
    ~FolderMemory();
    FolderMemory(const FolderMemory &) = delete;
    FolderMemory &operator=(const FolderMemory &) = delete;

    /// Beyond the bound those go first that were asked for longest ago.
    void watch(const QList<QByteArray> &folders);
    /// Reads what has happened since.
    void drain();

    struct Fate
    {
        QList<QByteArray> movedTo; // Where the file may be.
        bool deleted = false; // Nothing but the deletion of this name was told.
    };
    /// What happened to what had this path.
    Fate fateOf(const QByteArray &path) const;
    /// The file is at its path: what was told before is history.
    void seen(const QByteArray &path);
    bool isEmpty() const; // Nothing was told that is not history.

private:
    struct Watch
    {
        QByteArray folder;
        quint64 asked = 0;
    };
    struct Event
    {
        enum class Kind { Away, Moved, Deleted };
        Kind kind = Kind::Away;
        QByteArray to;
    };
    void read(const char *bytes, qsizetype size);
    void note(int watch, quint32 mask, quint32 cookie, const QByteArray &name);
    void forgetWatch(int watch);
    void removeOldest();
    Fate fateOfName(QByteArray path) const;

    const qsizetype m_mostFolders;
    mutable std::mutex m_mutex;
    int m_queue = -1;
    quint64 m_asked = 0;
    QMap<int, Watch> m_watches;
    QHash<QByteArray, int> m_byFolder;
    QHash<QByteArray, QList<Event>> m_events; // By path, oldest first.
    QHash<quint32, QByteArray> m_halfMoves; // By cookie: from where.
};
