#include "platform/linux/files/LocationCheck.h"

#include "platform/linux/files/LocalFolder.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"

#include <algorithm>
#include <utility>

#include <sys/stat.h>

namespace {

using Outcome = BookmarkAnswer::Outcome;

constexpr qsizetype mostNeighbours = 4000; // Names that a missing folder may have now.
constexpr qsizetype mostLikely = 64; // Folders that a walk reads first.

}

/// Where the kernel told of a rename, where a search outside has seen them, then in
/// the trash, in the folders at hand, and for a folder that is gone in its neighbours.
void LocationCheck::findMissing()
{
    if (m_missing.isEmpty())
        return;
    m_parts.memory.drain();
    Volumes volumes(*m_mounts);
    QHash<quint64, MissingGroup> groups; // By device.
    for (const int query : std::exchange(m_missing, {})) {
        Outcome &outcome = m_answers[query].outcome;
        outcome = Outcome::Missing;
        if (Clock::now() >= m_deadline)
            continue;
        const BookmarkRecord &record = *m_memo.known.at(query).record;
        const auto volume = volumes.find(record);
        const bool mayAnswer = m_bound == Bookmarks::Bound::Brief || m_parts.isEarly();
        if (!volume || (volume->remote && mayAnswer)) {
            // Without a table of mounts nobody knows which volumes are there.
            if (mayAnswer)
                outcome = Outcome::Unanswered;
            else if (!m_mounts->all().empty())
                outcome = Outcome::Absent;
            continue;
        }
        FileIdentity file = record.identity;
        file.device = volume->device;
        if (isTold(query, file, *volume))
            continue;
        MissingGroup &group = groups[file.device];
        group.volume = *volume;
        group.files.append({ query, file });
    }
    for (MissingGroup &group : groups)
        search(group);
}

bool LocationCheck::isTold(int query, const FileIdentity &file, const Volume &volume)
{
    for (const QByteArray &path : m_parts.memory.placesOf(m_memo.known.at(query).path)) {
        if (isAt(query, path, file))
            return true;
    }
    using Answer = OutsideSearches::Answer::State;
    const auto answer = m_parts.outside->answerFor(file, volume, *m_mounts);
    if (answer.state == Answer::Undecided && volume.walkable)
        return true; // It stays, without any look at all until something changes.
    if (answer.state != Answer::Found)
        return false;
    if (isAt(query, answer.path, file))
        return true;
    m_parts.outside->forget(file); // Moved again.
    return false;
}

bool LocationCheck::isAt(int query, const QByteArray &path, const FileIdentity &file)
{
    const FileLook look = lookSafely(path);
    if (look.state != FileLook::State::Present || look.identity != file)
        return false;
    // An editor may have renamed the former file and written a new one by now.
    const QByteArray &own = m_memo.known.at(query).path;
    const FileLook here = lookSafely(own);
    if (here.state == FileLook::State::Present)
        resolve(query, own, here);
    else
        resolve(query, path, look);
    return true;
}

void LocationCheck::search(MissingGroup &group)
{
    const bool near = group.volume.remote || searchNear(group);
    if (m_bound == Bookmarks::Bound::Brief)
        return;
    using Answer = OutsideSearches::Answer::State;
    QList<FileIdentity> files;
    for (const auto &[query, file] : std::as_const(group.files)) {
        const auto answer = m_parts.outside->answerFor(file, group.volume, *m_mounts).state;
        const bool ended = answer != Answer::Unknown || !file.hasBirth;
        if (!ended)
            files.append(file);
        // Where no walk can prove it, the look at what is near has to do.
        const bool proven = group.volume.walkable && file.hasBirth
            ? answer == Answer::Absent
            : near && !m_uncovered.contains(query);
        if (ended && proven)
            m_answers[query].outcome = Outcome::Absent;
    }
    if (!files.isEmpty())
        m_parts.outside->start(group.volume, m_mounts, files, likelyFolders(group));
}

/// Takes those that it finds out of the group. Whether the look at the trash and at the files' own
/// folders came to its end.
bool LocationCheck::searchNear(MissingGroup &group)
{
    QList<FileIdentity> files;
    QList<QByteArray> own;
    for (const auto &[query, file] : std::as_const(group.files)) {
        const KnownBookmark &known = m_memo.known.at(query);
        files.append(file);
        own += { known.folder, FilePath::parent(known.record->path) };
    }
    InodeSearch::Limits limits = m_parts.bounds.near;
    limits.seconds = std::min(limits.seconds,
                              std::chrono::duration<double>(m_deadline - Clock::now()).count());
    InodeSearch search(files, limits, m_parts.outside->cancelled());
    QSet<QByteArray> seen;
    lookInto(search, group.volume, m_trash.contents(group.volume.roots), seen);
    const auto missing = lookInto(search, group.volume, own, seen);
    const bool covered = !search.isOver() && search.isWhole();
    for (const QByteArray &folder : missing) {
        if (!search.isOver())
            lookInto(search, group.volume, renamedInPlace(folder), seen);
    }
    lookInto(search, group.volume, m_parts.places.userFolders + m_openFolders, seen);
    group.files.removeIf([&](const std::pair<int, FileIdentity> &file) {
        const QByteArray path = search.found().value(file.second);
        return !path.isEmpty() && isAt(file.first, path, file.second);
    });
    return covered;
}

/// Those that lie on the file system and can be reached safely. Returns those that are missing.
QList<QByteArray> LocationCheck::lookInto(InodeSearch &search, const Volume &volume,
                                          const QList<QByteArray> &folders,
                                          QSet<QByteArray> &seen) const
{
    QList<QByteArray> missing;
    for (const QByteArray &path : folders) {
        if (search.isOver())
            break;
        if (seen.contains(path))
            continue;
        seen.insert(path);
        const LocalFolder folder(path, *m_mounts);
        struct stat status = {};
        if (folder.state() == LocalFolder::State::Open && ::fstat(folder.descriptor(), &status) == 0
            && status.st_dev == volume.device)
            search.lookInto(folder.realPath());
        if (folder.state() == LocalFolder::State::Missing)
            missing.append(path);
    }
    return missing;
}

/// Where a walk begins: the user's folders, and what is around those that the files were in.
QList<QByteArray> LocationCheck::likelyFolders(const MissingGroup &group) const
{
    QList<QByteArray> folders = m_parts.places.userFolders;
    for (const auto &[query, file] : group.files)
        folders.append(FilePath::parent(m_memo.known.at(query).folder));
    QList<QByteArray> result;
    for (const QByteArray &path : std::as_const(folders)) {
        const LocalFolder folder(path, *m_mounts);
        const Mount *mount = m_mounts->of(folder.realPath());
        if (folder.state() == LocalFolder::State::Open && mount != nullptr
            && group.volume.roots.contains(mount->point) && !result.contains(folder.realPath()))
            result.append(folder.realPath());
        if (result.size() >= mostLikely)
            break;
    }
    return result;
}

/// The folders that a missing one can be after a folder on its path was renamed in its place,
/// which is how most go: the neighbours of what is missing first, each with the rest of the path.
QList<QByteArray> LocationCheck::renamedInPlace(const QByteArray &missing) const
{
    QList<QByteArray> result;
    for (QByteArray above = missing; above.size() > 1;) {
        above = FilePath::parent(above);
        const LocalFolder folder(above, *m_mounts);
        if (folder.state() == LocalFolder::State::Missing)
            continue;
        if (folder.state() != LocalFolder::State::Open)
            break;
        const QByteArray start = above == "/" ? above : above + '/';
        const qsizetype slash = missing.indexOf('/', start.size());
        const QByteArray rest = slash < 0 ? QByteArray() : missing.mid(slash);
        for (const QByteArray &name : NativeFile::namesIn(folder.realPath()).mid(0, mostNeighbours))
            result.append(start + name + rest);
        break;
    }
    return result;
}
