#include "platform/linux/files/LocationCheck.h"

#include "platform/linux/files/LocalFolder.h"

#include "base/FilePath.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace {

using Outcome = BookmarkAnswer::Outcome;
using Clock = std::chrono::steady_clock;

Clock::time_point after(double seconds)
{
    return Clock::now()
        + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

bool isPresent(const FileLook &look)
{
    return look.state == FileLook::State::Present;
}

KnownBookmark understood(const BookmarkQuery &query)
{
    KnownBookmark known;
    known.query = query;
    if (query.bookmark)
        known.record = BookmarkCoding::decode(*query.bookmark);
    known.path = FilePath::standardized(FilePath::fromUrl(query.url));
    known.pathIsUrls = !known.path.isEmpty();
    if (!known.pathIsUrls && known.record)
        known.path = known.record->path;
    known.folder = FilePath::parent(known.path);
    known.name = known.path.constData()
        + (known.path.size() > 1 ? known.path.lastIndexOf('/') + 1 : qsizetype(0));
    return known;
}

}

LocationCheck::LocationCheck(BookmarkParts &parts, BookmarkMemo &memo,
                             const QList<BookmarkQuery> &queries, Bookmarks::Bound bound)
    : m_parts(parts)
    , m_memo(memo)
    , m_bound(bound)
    , m_deadline(after(bound == Bookmarks::Bound::Brief ? parts.bounds.brief : parts.bounds.remote))
    , m_mounts(parts.mounts.current())
    , m_trash(parts.places.homeTrash, *m_mounts)
    , m_hasAnswers(parts.outside->hasAnswers())
    , m_answers(queries.size())
{
    understand(queries);
}

QList<BookmarkAnswer> LocationCheck::run()
{
    m_parts.memory.drain();
    lookInFolders();
    for (auto tasks = m_remote.cbegin(); tasks != m_remote.cend(); ++tasks) {
        if (const auto job = m_parts.remote.start(tasks.key(), *tasks))
            m_jobs.append(job);
    }
    if (m_bound == Bookmarks::Bound::Background)
        m_parts.memory.watch(m_openFolders);
    findMissing();
    collectRemote();
    findMissing();
    return m_answers;
}

void LocationCheck::understand(const QList<BookmarkQuery> &queries)
{
    const qsizetype count = queries.size();
    bool changed = m_memo.known.size() != count;
    m_memo.known.resize(count);
    for (qsizetype i = 0; i < count; ++i) {
        KnownBookmark &known = m_memo.known[i];
        m_answers[i].url = queries[i].url;
        if (known.name == nullptr || known.query.bookmark != queries[i].bookmark
            || known.query.url != queries[i].url) {
            known = understood(queries[i]);
            changed = true;
        }
        if (known.mounts != m_mounts->number()) {
            known.mounts = m_mounts->number();
            known.remote = m_mounts->isRemote(known.path);
            known.trashed = m_trash.hold(known.path);
        }
    }
    if (!changed)
        return;
    m_memo.order.resize(count);
    std::iota(m_memo.order.begin(), m_memo.order.end(), 0);
    std::stable_sort(m_memo.order.begin(), m_memo.order.end(), [&](int a, int b) {
        return m_memo.known.at(a).folder < m_memo.known.at(b).folder;
    });
}

void LocationCheck::lookInFolders()
{
    std::optional<LocalFolder> folder;
    std::optional<LocalFolder> above; // Of several neighbours: looked up once.
    QByteArray path;
    for (const int query : std::as_const(m_memo.order)) {
        if (m_bound == Bookmarks::Bound::Brief && Clock::now() > m_deadline)
            return;
        const KnownBookmark &known = m_memo.known.at(query);
        if (known.path.isEmpty()) { // Neither an address nor a bookmark.
            m_answers[query].outcome = Outcome::Absent;
            continue;
        }
        if (known.remote) {
            addRemote(query, known.path);
            continue;
        }
        if (!folder || path != known.folder) {
            const qsizetype slash = known.folder.lastIndexOf('/');
            const bool neighbours = slash > 0 && path.lastIndexOf('/') == slash
                && QByteArrayView(path).first(slash) == QByteArrayView(known.folder).first(slash);
            if (!neighbours)
                above.reset();
            else if (!above)
                above.emplace(path.left(slash), *m_mounts);
            path = known.folder;
            folder.emplace(path, *m_mounts, above ? &*above : nullptr);
            if (folder->state() == LocalFolder::State::Open)
                m_openFolders.append(path);
        }
        FileLook look;
        switch (folder->state()) {
        case LocalFolder::State::Remote:
            addRemote(query, folder->realPath());
            continue;
        case LocalFolder::State::Missing:
            look.state = FileLook::State::Missing;
            break;
        case LocalFolder::State::Unknown:
            break;
        case LocalFolder::State::Open:
            look = lookAt(folder->descriptor(), known.name);
        }
        settle(query, look);
    }
}

void LocationCheck::settle(int query, const FileLook &look, const RemoteLooks::Result *remote)
{
    const KnownBookmark &known = m_memo.known.at(query);
    BookmarkAnswer &answer = m_answers[query];
    if (!known.record) {
        settleWithoutRecord(query, look);
        return;
    }
    const FileIdentity &identity = known.record->identity;
    const bool here = isPresent(look) && look.identity == identity;
    const bool atRecord = known.path == known.record->path;
    if (here && atRecord && known.pathIsUrls) { // As nearly always.
        answer.outcome = Outcome::Found;
        answer.trashed = known.trashed;
        if (m_hasAnswers) // One that was absent may move again.
            m_parts.outside->forget(identity);
        return;
    }
    const QByteArray &other = remote ? remote->otherPath : known.record->path;
    FileLook otherLook;
    if (remote)
        otherLook = remote->otherLook;
    else if (!here && !atRecord)
        otherLook = lookSafely(other);
    if (!here && isPresent(otherLook) && otherLook.identity == identity)
        resolve(query, other, otherLook);
    else if (isPresent(look))
        resolve(query, known.path, look);
    else if (look.state == FileLook::State::Missing)
        m_missing.append(query);
    else
        answer.outcome = Outcome::Found; // As far as can be told.
}

void LocationCheck::settleWithoutRecord(int query, const FileLook &look)
{
    const KnownBookmark &known = m_memo.known.at(query);
    BookmarkAnswer &answer = m_answers[query];
    if (look.state == FileLook::State::Missing) {
        // On a volume that is not there yet its folder is missing too, or as empty as a mount
        // point.
        const bool mayCome = m_parts.isEarly() && LocalFolder(known.folder, *m_mounts).isBare();
        answer.outcome = mayCome ? Outcome::Unanswered : Outcome::Absent;
        return;
    }
    answer.outcome = Outcome::Found;
    if (!isPresent(look) || known.query.bookmark)
        return; // A damaged bookmark is kept.
    resolve(query, known.path, look);
    answer.trashed = false; // It has not followed the file anywhere.
}

/// Where the bookmark is not the one to keep.
void LocationCheck::resolve(int query, const QByteArray &path, const FileLook &look)
{
    const auto &record = m_memo.known.at(query).record;
    BookmarkAnswer &answer = m_answers[query];
    answer.outcome = Outcome::Found;
    answer.url
        = FilePath::toUrl(path, look.directory ? FilePath::Kind::Directory : FilePath::Kind::File);
    answer.trashed = m_trash.hold(path);
    if (record && record->identity == look.identity && record->path == path)
        return;
    const auto remote = m_remoteSystems.constFind(look.identity.device);
    answer.newBookmark = BookmarkCoding::encode(
        { look.identity, remote != m_remoteSystems.cend() ? *remote : Volumes::fileSystemOf(path),
          path });
}

FileLook LocationCheck::lookSafely(const QByteArray &path) const
{
    const LocalFolder folder(FilePath::parent(path), *m_mounts);
    if (folder.state() != LocalFolder::State::Open || m_mounts->isRemote(path))
        return {};
    return lookAt(folder.descriptor(), FilePath::lastComponent(path).constData());
}

void LocationCheck::addRemote(int query, const QByteArray &mounted)
{
    const Mount *mount = m_mounts->of(mounted);
    // Whatever touches what is mounted at need would mount it.
    if (mount == nullptr || mount->type == "autofs")
        return;
    const KnownBookmark &known = m_memo.known.at(query);
    RemoteLooks::Task task { query, known.path, {}, {}, {} };
    if (known.record) {
        const auto found = m_parts.outside->answerFor(known.record->identity, {}, *m_mounts);
        const QByteArray other = found.path.isEmpty() ? known.record->path : found.path;
        if (other != known.path && m_mounts->of(other) == mount)
            task.otherPath = other;
        task.wanted = known.record->identity;
        task.near = m_trash.contents({ mount->point });
        task.near.removeIf([&](const QByteArray &path) { return m_mounts->of(path) != mount; });
        task.near.append(known.folder);
    }
    m_remote[mount->point].append(task);
}

void LocationCheck::collectRemote()
{
    for (const auto &job : std::as_const(m_jobs)) {
        for (const auto &result : RemoteLooks::collect(*job, m_deadline)) {
            const FileLook &file = isPresent(result.look) ? result.look : result.otherLook;
            m_remoteSystems.insert(file.identity.device, result.fileSystem);
            if (!result.covered)
                m_uncovered.insert(result.query);
            settle(result.query, result.look, &result);
        }
    }
}
