#include "platform/linux/FolderMemory.h"

#include "base/FilePath.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr quint32 told = IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE | IN_MOVE_SELF | IN_ONLYDIR;
/// A folder where a build runs tells of thousands of names that nobody follows.
constexpr qsizetype mostNames = 16384;
constexpr int mostHops = 16;

QByteArray inFolder(const QByteArray &folder, const QByteArray &name)
{
    return folder == "/" ? '/' + name : folder + '/' + name;
}

}

FolderMemory::FolderMemory(qsizetype mostFolders)
    : m_mostFolders(mostFolders)
{
}

FolderMemory::~FolderMemory()
{
    if (m_queue >= 0)
        ::close(m_queue);
}

void FolderMemory::watch(const QList<QByteArray> &folders)
{
    const std::lock_guard lock(m_mutex);
    if (m_queue < 0)
        m_queue = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_queue < 0)
        return;
    ++m_asked;
    const qsizetype count = qMin(folders.size(), m_mostFolders);
    for (qsizetype i = 0; i < count; ++i) {
        // Again for a known one too: another folder may have its path by now.
        const int watch = ::inotify_add_watch(m_queue, folders[i].constData(), told);
        const int former = m_byFolder.value(folders[i], -1);
        if (former >= 0 && former != watch) {
            ::inotify_rm_watch(m_queue, former);
            forgetWatch(former);
        }
        if (watch < 0)
            continue;
        Watch &known = m_watches[watch];
        if (known.folder != folders[i]) {
            m_byFolder.remove(known.folder);
            known.folder = folders[i];
            m_byFolder.insert(known.folder, watch);
        }
        known.asked = m_asked;
    }
    removeOldest();
}

void FolderMemory::removeOldest()
{
    while (m_watches.size() > m_mostFolders) {
        const auto oldest
            = std::min_element(m_watches.begin(), m_watches.end(),
                               [](const Watch &a, const Watch &b) { return a.asked < b.asked; });
        ::inotify_rm_watch(m_queue, oldest.key());
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
    while (m_queue >= 0 && (size = ::read(m_queue, bytes.data(), bytes.size())) > 0)
        read(bytes.data(), size);
}

void FolderMemory::read(const char *bytes, qsizetype size)
{
    qsizetype at = 0;
    while (at + static_cast<qsizetype>(sizeof(inotify_event)) <= size) {
        inotify_event event = {};
        std::memcpy(&event, bytes + at, sizeof event);
        const char *name = bytes + at + sizeof event;
        note(event.wd, event.mask, event.cookie,
             QByteArray(name, static_cast<qsizetype>(::strnlen(name, event.len))));
        at += static_cast<qsizetype>(sizeof event + event.len);
    }
}

void FolderMemory::note(int watch, quint32 mask, quint32 cookie, const QByteArray &name)
{
    if ((mask & IN_Q_OVERFLOW) != 0 || m_events.size() > mostNames
        || m_halfMoves.size() > mostNames) {
        m_events.clear();
        m_halfMoves.clear();
    }
    const auto known = m_watches.constFind(watch);
    if (known == m_watches.cend())
        return;
    if ((mask & IN_MOVE_SELF) != 0)
        ::inotify_rm_watch(m_queue, watch); // Its path is another one now.
    if ((mask & (IN_MOVE_SELF | IN_IGNORED)) != 0) {
        forgetWatch(watch);
        return;
    }
    const QByteArray path = inFolder(known->folder, name);
    if ((mask & IN_DELETE) != 0)
        m_events[path].append({ Event::Kind::Deleted, {} });
    if ((mask & IN_MOVED_FROM) != 0) {
        m_events[path].append({ Event::Kind::Away, {} });
        m_halfMoves.insert(cookie, path);
    }
    if ((mask & IN_MOVED_TO) == 0 || !m_halfMoves.contains(cookie))
        return;
    QList<Event> &events = m_events[m_halfMoves.take(cookie)];
    const auto away = std::find_if(events.rbegin(), events.rend(), [](const Event &event) {
        return event.kind == Event::Kind::Away;
    });
    if (away != events.rend())
        *away = { Event::Kind::Moved, path };
}

FolderMemory::Fate FolderMemory::fateOf(const QByteArray &path) const
{
    const std::lock_guard lock(m_mutex);
    Fate fate = fateOfName(path);
    // A folder above it may have been moved within watched ones.
    for (QByteArray folder = FilePath::parent(path); fate.movedTo.isEmpty() && folder.size() > 1;
         folder = FilePath::parent(folder)) {
        for (const QByteArray &to : fateOfName(folder).movedTo)
            fate.movedTo.append(to + path.mid(folder.size()));
    }
    return fate;
}

FolderMemory::Fate FolderMemory::fateOfName(QByteArray path) const
{
    Fate fate;
    bool alone = true;
    for (int hop = 0; hop < mostHops; ++hop) {
        const QList<Event> events = m_events.value(path);
        alone = alone && events.size() == 1;
        fate.deleted = alone && events[0].kind == Event::Kind::Deleted;
        path.clear();
        for (const Event &event : events) {
            if (event.kind == Event::Kind::Moved)
                fate.movedTo.append(path = event.to);
        }
        if (path.isEmpty())
            break;
    }
    return fate;
}

void FolderMemory::seen(const QByteArray &path)
{
    const std::lock_guard lock(m_mutex);
    m_events.remove(path);
}

bool FolderMemory::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_events.isEmpty();
}
