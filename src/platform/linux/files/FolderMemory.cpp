#include "platform/linux/files/FolderMemory.h"

#include "base/FilePath.h"

#include <algorithm>
#include <array>

#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr quint32 told = IN_MOVED_FROM | IN_MOVED_TO | IN_MOVE_SELF | IN_ONLYDIR;
constexpr qsizetype mostPlaces = 32;

}

FolderMemory::FolderMemory(qsizetype mostFolders, qsizetype mostMoves)
    : m_mostFolders(mostFolders)
    , m_mostMoves(mostMoves)
{
}

void FolderMemory::watch(const QList<QByteArray> &folders)
{
    const std::lock_guard lock(m_mutex);
    if (!m_queue)
        m_queue = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (!m_queue)
        return;
    ++m_asked;
    for (const QByteArray &folder : folders.mid(0, m_mostFolders)) {
        const auto former = m_byFolder.constFind(folder);
        if (former != m_byFolder.cend()) {
            m_watches[*former].asked = m_asked;
            continue;
        }
        const int watch = ::inotify_add_watch(m_queue.number(), folder.constData(), told);
        if (watch < 0)
            continue;
        Watch &known = m_watches[watch];
        m_byFolder.remove(known.folder); // One above it was renamed.
        known = { folder, m_asked };
        m_byFolder.insert(folder, watch);
    }
    while (m_watches.size() > m_mostFolders) {
        const auto oldest
            = std::min_element(m_watches.begin(), m_watches.end(),
                               [](const Watch &a, const Watch &b) { return a.asked < b.asked; });
        ::inotify_rm_watch(m_queue.number(), oldest.key());
        forgetWatch(oldest.key());
    }
}

void FolderMemory::forgetWatch(int watch)
{
    const Watch known = m_watches.take(watch);
    if (m_byFolder.value(known.folder, -1) == watch)
        m_byFolder.remove(known.folder);
}

void FolderMemory::drain()
{
    const std::lock_guard lock(m_mutex);
    alignas(inotify_event) std::array<char, 65536> bytes;
    ssize_t size = 0;
    while (m_queue && (size = ::read(m_queue.number(), bytes.data(), bytes.size())) > 0) {
        for (ssize_t at = 0; at < size;) {
            const auto &event = *reinterpret_cast<const inotify_event *>(bytes.data() + at);
            note(event.wd, event.mask, event.cookie, event.len > 0 ? event.name : "");
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

void FolderMemory::note(int watch, quint32 mask, quint32 cookie, const QByteArray &name)
{
    if (m_moves.size() + m_halfMoves.size() >= m_mostMoves) {
        m_moves.clear();
        m_halfMoves.clear();
    }
    const auto known = m_watches.constFind(watch);
    if (known == m_watches.cend())
        return;
    if ((mask & IN_MOVE_SELF) != 0)
        ::inotify_rm_watch(m_queue.number(), watch); // Its path is another one now.
    if ((mask & (IN_MOVE_SELF | IN_IGNORED)) != 0) {
        forgetWatch(watch);
        return;
    }
    const QByteArray path = FilePath::standardized(known->folder + '/' + name);
    if ((mask & IN_MOVED_FROM) != 0)
        m_halfMoves.insert(cookie, path);
    if ((mask & IN_MOVED_TO) == 0 || !m_halfMoves.contains(cookie))
        return;
    const QByteArray from = m_halfMoves.take(cookie);
    if (!m_moves.contains(from, path))
        m_moves.insert(from, path);
}

QList<QByteArray> FolderMemory::placesOf(const QByteArray &path) const
{
    const std::lock_guard lock(m_mutex);
    QList<QByteArray> places;
    for (QByteArray start = path; start.size() > 1 && !m_moves.isEmpty();
         start = FilePath::parent(start)) {
        QList<QByteArray> reached { start };
        for (qsizetype i = 0; i < reached.size(); ++i) {
            for (const QByteArray &to : m_moves.values(reached[i])) {
                if (reached.size() < mostPlaces && !reached.contains(to))
                    reached.append(to);
            }
        }
        for (qsizetype i = 1; i < reached.size(); ++i)
            places.append(reached[i] + path.mid(start.size()));
    }
    return places;
}

qsizetype FolderMemory::moves() const
{
    const std::lock_guard lock(m_mutex);
    return m_moves.size() + m_halfMoves.size();
}
