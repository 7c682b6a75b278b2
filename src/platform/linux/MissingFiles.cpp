#include "platform/linux/MissingFiles.h"

#include "platform/linux/LocalFolder.h"

#include "base/FilePath.h"

#include <QSet>

#include <algorithm>
#include <utility>

#include <sys/stat.h>

namespace {

/// What a brief search leaves of the time for coming to its end.
constexpr double secondsToEnd = 0.02;
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

MissingFiles::MissingFiles(BookmarkParts &parts, const Mounts &mounts, Bookmarks::Bound bound,
                           Clock::time_point deadline, QList<QByteArray> folders)
    : m_parts(parts)
    , m_mounts(mounts)
    , m_bound(bound)
    , m_deadline(deadline)
    , m_folders(std::move(folders))
{
}

QList<MissingFiles::Outcome> MissingFiles::find(const QList<Wanted> &wanted)
{
    m_parts.memory.drain();
    QList<Outcome> outcomes(wanted.size());
    QHash<quint64, Group> groups; // By device.
    for (int i = 0; i < wanted.size(); ++i) {
        if (const auto outcome = withoutSearch(wanted[i])) {
            outcomes[i] = *outcome;
            continue;
        }
        const auto volume = Volumes::find(wanted[i].record, m_mounts);
        if (!volume) {
            outcomes[i].state = Outcome::State::Gone;
            continue;
        }
        FileIdentity file = wanted[i].record.identity;
        file.device = volume->device;
        if (const auto outcome = fromOutside(file, *volume)) {
            outcomes[i] = *outcome;
            continue;
        }
        Group &group = groups[file.device];
        group.volume = *volume;
        group.files.append({ i, file });
        m_folders.prepend(FilePath::parent(wanted[i].record.path));
        m_folders.prepend(FilePath::parent(wanted[i].path));
    }
    if (!groups.isEmpty() && m_parts.places.userFolders)
        m_folders.append(m_parts.places.userFolders());
    for (Group &group : groups)
        search(group, outcomes);
    return outcomes;
}

std::optional<MissingFiles::Outcome> MissingFiles::withoutSearch(const Wanted &wanted)
{
    if (auto outcome = fromMemory(wanted))
        return outcome;
    // Without a birth time a number in a folder says nothing about the file.
    if (!wanted.record.identity.hasBirth)
        return Outcome { Outcome::State::Gone, {}, {} };
    return std::nullopt;
}

std::optional<MissingFiles::Outcome> MissingFiles::fromMemory(const Wanted &wanted)
{
    const FolderMemory::Fate fate = m_parts.memory.fateOf(wanted.path);
    for (const QByteArray &path : fate.movedTo) {
        if (auto outcome = foundAt(path, wanted.record.identity))
            return outcome;
    }
    // With a second name it lives on.
    if (fate.deleted && wanted.links == 1)
        return Outcome { Outcome::State::Gone, {}, {} };
    return std::nullopt;
}

std::optional<MissingFiles::Outcome> MissingFiles::foundAt(const QByteArray &path,
                                                           const FileIdentity &file) const
{
    if (m_mounts.isRemote(path))
        return std::nullopt;
    const FileLook look = lookAt(path);
    if (look.state != FileLook::State::Present || look.identity != file)
        return std::nullopt;
    return Outcome { Outcome::State::Found, path, look };
}

std::optional<MissingFiles::Outcome> MissingFiles::fromOutside(const FileIdentity &file,
                                                               const Volume &volume)
{
    using State = OutsideSearches::Answer::State;
    const OutsideSearches::Answer answer = m_parts.outside.answerFor(file);
    if (answer.state == State::Absent)
        return Outcome { Outcome::State::Gone, {}, {} };
    if (answer.state == State::Unknown || volume.remote)
        return std::nullopt;
    auto outcome = foundAt(answer.path, file);
    if (!outcome)
        m_parts.outside.forget(file); // Moved again.
    return outcome;
}

void MissingFiles::search(Group &group, QList<Outcome> &outcomes)
{
    const bool background = m_bound == Bookmarks::Bound::Background;
    bool whole = false;
    if (!m_parts.outside.isIdle(group.volume.device)) {
        whole = searchNear(group, outcomes);
    } else {
        if (!group.volume.remote)
            whole = run(group, m_parts.bounds.inCheck, outcomes);
        if (!whole && background && !group.files.isEmpty()) {
            QList<FileIdentity> files;
            for (const auto &[index, file] : std::as_const(group.files))
                files.append(file);
            m_parts.outside.start(group.volume, foldersOn(group.volume), files);
        }
    }
    for (const auto &[index, file] : std::as_const(group.files))
        outcomes[index].state = whole ? Outcome::State::Gone : Outcome::State::Searching;
}

/// Another search has to be waited for; most files are not moved far.
bool MissingFiles::searchNear(Group &group, QList<Outcome> &outcomes)
{
    const bool anyNew
        = std::count_if(group.files.cbegin(), group.files.cend(),
                        [&](const auto &f) { return m_parts.outside.isNew(f.second); })
        > 0;
    return anyNew && !group.volume.remote && run(group, m_parts.bounds.nearby, outcomes);
}

/// Takes those that it finds out of the group; whether it looked everywhere.
bool MissingFiles::run(Group &group, InodeSearch::Limits limits, QList<Outcome> &outcomes)
{
    const QList<QByteArray> first = foldersOn(group.volume);
    auto end = Clock::now()
        + std::chrono::duration_cast<Clock::duration>(
                   std::chrono::duration<double>(limits.seconds));
    if (m_bound == Bookmarks::Bound::Brief)
        end = std::min(end, m_deadline);
    bool whole = true;
    for (const QByteArray &root : group.volume.roots) {
        limits.seconds = std::chrono::duration<double>(end - Clock::now()).count() - secondsToEnd;
        if (limits.seconds <= 0 || limits.entries <= 0)
            return false;
        QList<FileIdentity> files;
        for (const auto &[index, file] : std::as_const(group.files))
            files.append(file);
        const auto result
            = InodeSearch::run(root, first, files, limits, m_parts.outside.cancelled());
        limits.entries -= result.entries;
        const QHash<FileIdentity, QByteArray> found(result.found.cbegin(), result.found.cend());
        group.files.removeIf([&](const std::pair<int, FileIdentity> &file) {
            const auto outcome = found.contains(file.second)
                ? foundAt(found.value(file.second), file.second)
                : std::nullopt;
            if (outcome)
                outcomes[file.first] = *outcome;
            return outcome.has_value();
        });
        if (group.files.isEmpty())
            return true;
        whole = whole && result.whole;
    }
    return whole;
}

/// Those at hand that lie on the file system and can be reached safely.
QList<QByteArray> MissingFiles::foldersOn(const Volume &volume)
{
    QList<QByteArray> result;
    QList<QByteArray> missing;
    QSet<QByteArray> known;
    const auto consider = [&](const QByteArray &path) {
        if (known.contains(path))
            return;
        known.insert(path);
        const LocalFolder folder(path, m_mounts);
        struct stat status = {};
        if (folder.state() == LocalFolder::State::Missing)
            missing.append(path);
        if (folder.state() == LocalFolder::State::Open && ::fstat(folder.descriptor(), &status) == 0
            && status.st_dev == volume.device)
            result.append(path);
    };
    for (const QByteArray &path : std::as_const(m_folders))
        consider(path);
    const QList<QByteArray> lost = std::exchange(missing, {});
    for (const QByteArray &path : lost) {
        for (const QByteArray &neighbour : renamedInPlace(path, m_mounts))
            consider(neighbour);
    }
    return result;
}
