#include "platform/linux/MissingFiles.h"

#include "platform/linux/LocalFolder.h"

#include "base/FilePath.h"

#include <QSet>

#include <algorithm>
#include <utility>

#include <sys/stat.h>

namespace {

using State = BookmarkAnswer::Outcome;

/// How many neighbours of a missing folder may be it.
constexpr qsizetype mostNeighbours = 1000;

/// The folders that a missing one can be after a folder on its path was renamed in its place,
/// which is how most go: the neighbours of what is missing first, each with the rest of the path.
QList<QByteArray> renamedInPlace(const QByteArray &missing, const Mounts &mounts)
{
    QByteArray above = missing;
    while (above.size() > 1) {
        above = FilePath::parent(above);
        const LocalFolder folder(above, mounts);
        if (folder.state() == LocalFolder::State::Missing)
            continue;
        QList<QByteArray> result;
        if (folder.state() != LocalFolder::State::Open)
            return result;
        const QByteArray start = above == "/" ? above : above + '/';
        const qsizetype slash = missing.indexOf('/', start.size());
        const QByteArray rest = slash < 0 ? QByteArray() : missing.mid(slash);
        for (const QByteArray &name : folder.folders(mostNeighbours))
            result.append(start + name + rest);
        return result;
    }
    return {};
}

}

MissingFiles::MissingFiles(BookmarkParts &parts, std::shared_ptr<const Mounts> mounts,
                           const TrashFolders &trash, Bookmarks::Bound bound,
                           Clock::time_point deadline, QList<QByteArray> folders)
    : m_parts(parts)
    , m_mounts(std::move(mounts))
    , m_trash(trash)
    , m_bound(bound)
    , m_deadline(deadline)
    , m_folders(std::move(folders))
{
}

QList<MissingFiles::Outcome> MissingFiles::find(const QList<Wanted> &wanted)
{
    m_parts.memory.drain();
    QList<Outcome> outcomes(wanted.size());
    Volumes volumes(*m_mounts);
    QHash<quint64, Group> groups; // By device.
    for (int i = 0; i < wanted.size() && Clock::now() < m_deadline; ++i) {
        FileIdentity file = wanted[i].record.identity;
        const auto volume = volumes.find(wanted[i].record);
        if (!volume || volume->remote)
            outcomes[i].state = m_bound == Bookmarks::Bound::Brief || m_parts.isEarly()
                ? State::Unanswered
                : (volume ? State::Missing : State::Absent);
        if (!volume || outcomes[i].state == State::Unanswered)
            continue;
        file.device = volume->device;
        if (const auto outcome = withoutSearch(wanted[i], file, *volume)) {
            outcomes[i] = *outcome;
            continue;
        }
        Group &group = groups[file.device];
        group.volume = *volume;
        group.files.append({ i, file });
    }
    for (Group &group : groups)
        search(group, wanted, outcomes);
    return outcomes;
}

std::optional<MissingFiles::Outcome>
MissingFiles::withoutSearch(const Wanted &wanted, const FileIdentity &file, const Volume &volume)
{
    for (const QByteArray &path : m_parts.memory.placesOf(wanted.path)) {
        if (auto outcome = foundAt(path, wanted.record.identity))
            return outcome;
    }
    using Answer = OutsideSearches::Answer::State;
    const auto answer = m_parts.outside.answerFor(file, *m_mounts);
    if (answer.state == Answer::Undecided && volume.walkable)
        return Outcome(); // It stays, without any look at all until something changes.
    if (answer.state != Answer::Found)
        return std::nullopt;
    auto outcome = foundAt(answer.path, file);
    if (!outcome)
        m_parts.outside.forget(file); // Moved again.
    return outcome;
}

std::optional<MissingFiles::Outcome> MissingFiles::foundAt(const QByteArray &path,
                                                           const FileIdentity &file) const
{
    if (m_mounts->isRemote(path))
        return std::nullopt;
    const FileLook look = lookAt(path);
    if (look.state != FileLook::State::Present || look.identity != file)
        return std::nullopt;
    return Outcome { State::Found, path, look };
}

void MissingFiles::search(Group &group, const QList<Wanted> &wanted, QList<Outcome> &outcomes)
{
    const bool near = group.volume.remote || searchNear(group, wanted, outcomes);
    if (m_bound == Bookmarks::Bound::Brief)
        return;
    using Answer = OutsideSearches::Answer::State;
    QList<FileIdentity> files;
    for (const auto &[index, file] : std::as_const(group.files)) {
        const auto answer = m_parts.outside.answerFor(file, *m_mounts).state;
        const bool ended = answer != Answer::Unknown || !file.hasBirth;
        if (!ended)
            files.append(file);
        // Where no walk can prove it, the look at what is near has to do.
        const bool proven = group.volume.walkable && file.hasBirth ? answer == Answer::Absent
                                                                   : near && wanted[index].covered;
        if (ended && proven)
            outcomes[index].state = State::Absent;
    }
    if (!files.isEmpty())
        m_parts.outside.start(group.volume, m_mounts, files);
}

/// Takes those that it finds out of the group.
bool MissingFiles::searchNear(Group &group, const QList<Wanted> &wanted, QList<Outcome> &outcomes)
{
    QList<FileIdentity> files;
    QList<QByteArray> own;
    for (const auto &[index, file] : std::as_const(group.files)) {
        files.append(file);
        for (const QByteArray &path : { wanted[index].path, wanted[index].record.path })
            own.append(FilePath::parent(path));
    }
    InodeSearch::Limits limits = m_parts.bounds.near;
    limits.seconds = std::min(limits.seconds,
                              std::chrono::duration<double>(m_deadline - Clock::now()).count());
    InodeSearch search(files, limits, m_parts.outside.cancelled());
    const bool covered = lookNear(search, group.volume, own);
    group.files.removeIf([&](const std::pair<int, FileIdentity> &file) {
        const auto outcome = search.found().contains(file.second)
            ? foundAt(search.found().value(file.second), file.second)
            : std::nullopt;
        if (outcome)
            outcomes[file.first] = *outcome;
        return outcome.has_value();
    });
    return covered;
}

/// Whether the look at the trash and at the files' own folders came to its end.
bool MissingFiles::lookNear(InodeSearch &search, const Volume &volume, const QList<QByteArray> &own)
{
    QSet<QByteArray> known;
    QList<QByteArray> missing;
    const auto look = [&](const QList<QByteArray> &folders) {
        for (const QByteArray &folder : folders) {
            if (search.isOver())
                return;
            const qsizetype before = known.size();
            known.insert(folder);
            if (known.size() > before && !lookInto(search, volume, folder))
                missing.append(folder);
        }
    };
    look(m_trash.contents(volume.roots));
    missing.clear();
    look(own);
    const bool covered = !search.isOver() && search.isWhole();
    for (const QByteArray &folder : std::exchange(missing, {})) {
        if (search.isOver())
            break;
        look(renamedInPlace(folder, *m_mounts));
    }
    if (m_parts.places.userFolders)
        look(m_parts.places.userFolders());
    look(m_folders);
    return covered;
}

/// One that lies on the file system and can be reached safely; false where it is missing.
bool MissingFiles::lookInto(InodeSearch &search, const Volume &volume, const QByteArray &path)
{
    const LocalFolder folder(path, *m_mounts);
    struct stat status = {};
    if (folder.state() == LocalFolder::State::Open && ::fstat(folder.descriptor(), &status) == 0
        && status.st_dev == volume.device)
        search.lookInto(folder.realPath());
    return folder.state() != LocalFolder::State::Missing;
}
