#pragma once

#include "base/Descriptor.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>

#include <mutex>

/// What the kernel told of renames within the folders of the files that are
/// followed. It keeps no thread and wakes nobody: the kernel's queue is emptied
/// when a check asks. Everything here is a hint where to look. Any thread.
class FolderMemory
{
public:
    FolderMemory(qsizetype mostFolders, qsizetype mostMoves);

    /// Beyond the bound those go first that were asked for longest ago.
    void watch(const QList<QByteArray> &folders);
    /// Reads what has happened since.
    void drain();
    /// Where what had this path may be: it, or a folder above it, was renamed.
    QList<QByteArray> placesOf(const QByteArray &path) const;
    qsizetype moves() const;

private:
    struct Watch
    {
        QByteArray folder;
        quint64 asked = 0;
    };
    void note(int watch, quint32 mask, quint32 cookie, const QByteArray &name);
    void forgetWatch(int watch);

    const qsizetype m_mostFolders;
    // A build in a folder renames thousands of files that nobody follows.
    const qsizetype m_mostMoves;
    mutable std::mutex m_mutex;
    Descriptor m_queue;
    quint64 m_asked = 0;
    QMap<int, Watch> m_watches;
    QHash<QByteArray, int> m_byFolder;
    QMultiHash<QByteArray, QByteArray> m_moves; // From where, to where.
    QHash<quint32, QByteArray> m_halfMoves; // By cookie: from where.
};
