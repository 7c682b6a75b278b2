#include "platform/linux/LocationCheck.h"

#include "platform/linux/LocalFolder.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"

namespace {

using Outcome = BookmarkAnswer::Outcome;
using Clock = std::chrono::steady_clock;

Clock::time_point after(double seconds)
{
    return Clock::now()
        + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

QUrl urlOf(const QByteArray &path, const FileLook &look)
{
    return FilePath::toUrl(path, look.directory ? FilePath::Kind::Directory : FilePath::Kind::File);
}

bool isPresent(const FileLook &look)
{
    return look.state == FileLook::State::Present;
}

}

LocationCheck::LocationCheck(BookmarkParts &parts, BookmarkMemo &memo,
                             const QList<BookmarkQuery> &queries, Bookmarks::Bound bound)
    : m_parts(parts)
    , m_memo(memo)
    , m_queries(queries)
    , m_bound(bound)
    , m_deadline(after(bound == Bookmarks::Bound::Brief ? parts.bounds.brief : parts.bounds.remote))
    , m_mounts(parts.mounts.current())
    , m_trash(parts.places.homeTrash, *m_mounts)
    , m_answers(queries.size())
    , m_known(memo.understand(queries))
{
}

QList<BookmarkAnswer> LocationCheck::run()
{
    m_parts.memory.drain();
    sort();
    lookInFolders();
    lookFurther();
    startRemote();
    if (m_bound == Bookmarks::Bound::Background)
        m_parts.memory.watch(m_openFolders);
    findMissing();
    collectRemote();
    findMissing();
    return m_answers;
}

void LocationCheck::sort()
{
    for (int query = 0; query < m_queries.size(); ++query) {
        KnownBookmark &known = m_known[static_cast<size_t>(query)];
        m_answers[query].url = m_queries[query].url;
        if (known.path.isEmpty()) { // Neither an address nor a bookmark.
            m_answers[query].outcome = Outcome::Absent;
            continue;
        }
        if (known.mounts != m_mounts->number()) {
            known.remote = m_mounts->isRemote(known.path);
            known.mounts = m_mounts->number();
        }
        if (known.remote) {
            addRemote(query, known.path);
            continue;
        }
        const auto folder = static_cast<size_t>(known.folder);
        if (folder >= m_byFolder.size())
            m_byFolder.resize(folder + 1);
        m_byFolder[folder].push_back(query);
    }
}

void LocationCheck::lookInFolders()
{
    for (size_t folder = 0; folder < m_byFolder.size() && !isLate(); ++folder) {
        if (!m_byFolder[folder].empty())
            lookInFolder(static_cast<int>(folder));
    }
}

void LocationCheck::lookInFolder(int folder)
{
    const QByteArray &path = m_memo.folders()[folder];
    const LocalFolder opened(path, *m_mounts);
    if (opened.state() == LocalFolder::State::Open)
        m_openFolders.append(path);
    size_t looks = 0;
    for (const int query : m_byFolder[static_cast<size_t>(folder)]) {
        constexpr size_t looksBetween = 64;
        if (++looks % looksBetween == 0 && isLate())
            return;
        KnownBookmark &known = m_known[static_cast<size_t>(query)];
        FileLook look;
        switch (opened.state()) {
        case LocalFolder::State::Remote:
            addRemote(query, opened.realPath());
            continue;
        case LocalFolder::State::Missing:
            look.state = FileLook::State::Missing;
            break;
        case LocalFolder::State::Unknown:
            break;
        case LocalFolder::State::Open:
            look = lookAt(opened.descriptor(), known.name);
        }
        settle(query, look);
    }
}

bool LocationCheck::isLate() const
{
    return m_bound == Bookmarks::Bound::Brief && Clock::now() > m_deadline;
}

/// The file that the bookmark was made of is where it was, as nearly always.
void LocationCheck::settle(int query, const FileLook &look)
{
    const KnownBookmark &known = m_known[static_cast<size_t>(query)];
    if (!known.record || !isPresent(look) || look.identity != known.record->identity
        || known.path != known.record->path || !known.pathIsUrls) {
        m_away.emplace_back(query, look);
        return;
    }
    BookmarkAnswer &answer = m_answers[query];
    answer.outcome = Outcome::Found;
    answer.trashed = m_trash.hold(known.path);
}

void LocationCheck::lookFurther()
{
    for (const auto &[query, look] : m_away) {
        const KnownBookmark &known = m_known[static_cast<size_t>(query)];
        const bool elsewhere = known.record && known.record->path != known.path;
        const QByteArray other = elsewhere ? known.record->path : QByteArray();
        settleAway(query, look, other, elsewhere ? lookSafely(other) : FileLook());
    }
    m_away.clear();
}

FileLook LocationCheck::lookSafely(const QByteArray &path) const
{
    const LocalFolder folder(FilePath::parent(path), *m_mounts);
    if (folder.state() != LocalFolder::State::Open || m_mounts->isRemote(path))
        return {};
    return lookAt(folder.descriptor(), FilePath::lastComponent(path).constData());
}

void LocationCheck::settleAway(int query, const FileLook &look, const QByteArray &otherPath,
                               const FileLook &otherLook)
{
    const KnownBookmark &known = m_known[static_cast<size_t>(query)];
    if (!known.record) {
        settleWithoutRecord(query, look);
        return;
    }
    const FileIdentity &identity = known.record->identity;
    const bool here = isPresent(look) && look.identity == identity;
    if (!here && isPresent(otherLook) && otherLook.identity == identity)
        resolve(query, otherPath, otherLook);
    else if (isPresent(look))
        resolve(query, known.path, look);
    else if (look.state == FileLook::State::Missing)
        m_missing.append(query);
    else
        m_answers[query].outcome = Outcome::Found; // As far as can be told.
}

void LocationCheck::settleWithoutRecord(int query, const FileLook &look)
{
    const KnownBookmark &known = m_known[static_cast<size_t>(query)];
    BookmarkAnswer &answer = m_answers[query];
    if (look.state == FileLook::State::Missing) {
        answer.outcome = mayComeLate(known) ? Outcome::Unanswered : Outcome::Absent;
        return;
    }
    answer.outcome = Outcome::Found;
    if (!isPresent(look) || known.query.bookmark)
        return; // A damaged bookmark is kept.
    resolve(query, known.path, look);
    answer.trashed = false; // It has not followed the file anywhere.
}

/// Whether what is missing may be on a volume that is not there yet: without a
/// bookmark only its folder tells, which is missing too or as empty as a mount point.
bool LocationCheck::mayComeLate(const KnownBookmark &known) const
{
    if (!m_parts.isEarly())
        return false;
    const LocalFolder folder(FilePath::parent(known.path), *m_mounts);
    return folder.state() != LocalFolder::State::Open
        || NativeFile::namesIn(folder.realPath()).isEmpty();
}

/// Where the bookmark is not the one to keep.
void LocationCheck::resolve(int query, const QByteArray &path, const FileLook &look)
{
    const KnownBookmark &known = m_known[static_cast<size_t>(query)];
    BookmarkAnswer &answer = m_answers[query];
    answer.outcome = Outcome::Found;
    answer.url = urlOf(path, look);
    answer.trashed = m_trash.hold(path);
    const bool same
        = known.record && known.record->identity == look.identity && known.record->path == path;
    if (!same)
        answer.newBookmark = bookmarkOf(path, look);
}

QByteArray LocationCheck::bookmarkOf(const QByteArray &path, const FileLook &look)
{
    const auto remote = m_remoteSystems.constFind(look.identity.device);
    const quint64 system = remote != m_remoteSystems.cend()
        ? *remote
        : m_parts.systems.of(look.identity.device, path, *m_mounts);
    return BookmarkCoding::encode({ look.identity, system, path });
}

void LocationCheck::addRemote(int query, const QByteArray &mounted)
{
    const Mount *mount = m_mounts->of(mounted);
    // Whatever touches what is mounted at need would mount it.
    if (mount == nullptr || mount->type == "autofs")
        return;
    const KnownBookmark &known = m_known[static_cast<size_t>(query)];
    RemoteLooks::Task task { known.path, {}, {}, {} };
    if (known.record) {
        const auto found = m_parts.outside.answerFor(known.record->identity, *m_mounts);
        const QByteArray other = found.path.isEmpty() ? known.record->path : found.path;
        if (other != known.path && m_mounts->of(other) == mount)
            task.otherPath = other;
        task.wanted = known.record->identity;
        task.near = m_trash.contents({ mount->point });
        task.near.removeIf([&](const QByteArray &path) { return m_mounts->of(path) != mount; });
        task.near.append(FilePath::parent(known.path));
    }
    RemoteGroup &group = m_remote[mount->point];
    group.queries.append(query);
    group.tasks.append(task);
}

void LocationCheck::startRemote()
{
    for (auto group = m_remote.begin(); group != m_remote.end(); ++group)
        group->job = m_parts.remote.start(group.key(), group->tasks);
}

void LocationCheck::collectRemote()
{
    for (const RemoteGroup &group : std::as_const(m_remote)) {
        if (!group.job)
            continue;
        const auto results = RemoteLooks::collect(*group.job, m_deadline);
        for (int i = 0; i < results.size(); ++i) {
            const RemoteLooks::Result &result = results[i];
            if (!result.done)
                continue;
            const FileLook &file = isPresent(result.look) ? result.look : result.otherLook;
            m_remoteSystems.insert(file.identity.device, result.fileSystem);
            settle(group.queries[i], result.look);
            if (m_away.empty())
                continue;
            m_away.clear();
            settleAway(group.queries[i], result.look, result.otherPath, result.otherLook);
            if (!result.covered)
                m_uncovered.insert(group.queries[i]);
        }
    }
}

void LocationCheck::findMissing()
{
    if (m_missing.isEmpty())
        return;
    QList<MissingFiles::Wanted> wanted;
    for (const int query : std::as_const(m_missing)) {
        const KnownBookmark &known = m_known[static_cast<size_t>(query)];
        wanted.append({ *known.record, known.path, !m_uncovered.contains(query) });
    }
    MissingFiles files(m_parts, m_mounts, m_trash, m_bound, m_deadline, m_openFolders);
    const auto outcomes = files.find(wanted);
    for (int i = 0; i < outcomes.size(); ++i) {
        const int query = m_missing[i];
        m_answers[query].outcome = outcomes[i].state;
        if (outcomes[i].state != Outcome::Found)
            continue;
        // An editor may have renamed the former file and written a new one by now.
        const QByteArray &path = m_known[static_cast<size_t>(query)].path;
        const FileLook look = lookSafely(path);
        if (isPresent(look))
            resolve(query, path, look);
        else
            resolve(query, outcomes[i].path, outcomes[i].look);
    }
    m_missing.clear();
}
