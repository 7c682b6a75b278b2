// A check of many unchanged files beside bare stat calls for the same paths, both warm, and what
// it costs the main thread to make bookmarks for many files that are added at once.
//   bench_location_check [FILES] [FOLDERS]
// One figure a line: name, value, unit. The times are medians.
#include "platform/linux/files/BookmarkCoding.h"
#include "platform/linux/files/LinuxBookmarks.h"

#include "base/FilePath.h"
#include "base/NativeFile.h"

#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int rounds = 15;

double milliseconds(const std::function<void()> &work)
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Folders three levels deep below a home, with names as long as people's are.
QList<QByteArray> makeFiles(const QByteArray &root, int count, int folders)
{
    QList<QByteArray> paths;
    for (int i = 0; i < count; ++i) {
        const int folder = i / ((count + folders - 1) / folders);
        const QByteArray path = root + "/home/somebody/Documents/Projects "
            + QByteArray::number(folder % 10) + "/Season " + QByteArray::number(folder);
        if (paths.isEmpty() || FilePath::parent(paths.last()) != path)
            NativeFile::makeFolder(path);
        paths.append(path + "/Picture of a holiday " + QByteArray::number(i) + ".jpeg");
        ::close(::open(paths.last().constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    }
    return paths;
}

/// Processor time of the calling thread.
double ownMilliseconds(const std::function<void()> &work)
{
    const auto now = [] {
        timespec time = {};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    };
    const double start = now();
    work();
    return now() - start;
}

/// The same entries with their disk away, beside 31 mounts; then with half of the files deleted,
/// in the first check and in a later one.
void measureMissing(const QList<QByteArray> &paths, LinuxBookmarks &bookmarks,
                    const QList<BookmarkQuery> &queries)
{
    const QTemporaryDir other;
    const QByteArray table = other.path().toUtf8() + "/mountinfo";
    {
        std::ofstream mounts(table.constData());
        mounts << "1 1 0:1 / / rw - ext4 x rw\n";
        for (int i = 0; i < 30; ++i) {
            const QByteArray point = other.path().toUtf8() + '/' + QByteArray::number(i);
            NativeFile::makeFolder(point);
            mounts << "9 1 0:1 / " << point.constData() << " rw - ext4 x rw\n";
        }
    }
    LinuxBookmarks::Bounds bounds;
    bounds.lateVolumes = 0;
    LinuxBookmarks away(LinuxBookmarks::Places { {}, {}, table }, bounds);
    QList<BookmarkQuery> absent;
    for (const BookmarkQuery &query : queries) {
        auto record = *BookmarkCoding::decode(*query.bookmark);
        record.identity.device = 1;
        record.fileSystem ^= 1;
        record.path += ".away";
        absent.append({ FilePath::toUrl(record.path), BookmarkCoding::encode(record) });
    }
    for (const auto bound : { Bookmarks::Bound::Brief, Bookmarks::Bound::Background })
        std::printf("absent_volume_%s %.1f ms\n",
                    bound == Bookmarks::Bound::Brief ? "brief" : "background",
                    ownMilliseconds([&] { away.resolve(absent, bound); }));
    for (qsizetype i = 0; i < paths.size(); i += 2)
        ::unlink(paths[i].constData());
    for (const char *name : { "first", "second", "third" })
        std::printf("half_deleted_%s %.1f ms\n", name, ownMilliseconds([&] {
                        bookmarks.resolve(queries, Bookmarks::Bound::Background);
                    }));
}

}

int main(int argc, char **argv)
{
    const int count = argc > 1 ? std::atoi(argv[1]) : 10'000;
    const int folders = argc > 2 ? std::atoi(argv[2]) : 200;
    const QTemporaryDir root;
    const QList<QByteArray> paths = makeFiles(root.path().toUtf8(), count, folders);
    QList<QUrl> urls;
    for (const QByteArray &path : paths)
        urls.append(FilePath::toUrl(path));

    LinuxBookmarks bookmarks(LinuxBookmarks::Places { {}, {} });
    QList<BookmarkQuery> queries;
    std::vector<double> makes;
    std::vector<double> stats;
    std::vector<double> checks;
    int wrong = 0;
    for (int round = 0; round < rounds; ++round) {
        queries.clear();
        makes.push_back(milliseconds([&] {
            for (const QUrl &url : std::as_const(urls))
                queries.append({ url, bookmarks.make(url).bookmark });
        }));
    }
    for (int round = 0; round <= rounds; ++round) {
        struct stat status = {};
        const double bare = milliseconds([&] {
            for (const QByteArray &path : paths)
                wrong += ::stat(path.constData(), &status) == 0 ? 0 : 1;
        });
        QList<BookmarkAnswer> answers;
        const double check = milliseconds(
            [&] { answers = bookmarks.resolve(queries, Bookmarks::Bound::Background); });
        for (const BookmarkAnswer &answer : std::as_const(answers))
            wrong
                += answer.outcome == BookmarkAnswer::Outcome::Found && !answer.newBookmark ? 0 : 1;
        if (round == 0) {
            std::printf("first_check %.2f ms\n", check);
            continue;
        }
        stats.push_back(bare);
        checks.push_back(check);
    }
    std::printf("files %d\nfolders %d\nwrong %d\n", count, folders, wrong);
    std::printf("bare_stat %.2f ms\ncheck %.2f ms\nratio %.2f\n", median(stats), median(checks),
                median(checks) / median(stats));
    measureMissing(paths, bookmarks, queries);
    std::printf("make_each %.2f us\n", median(makes) * 1000 / count);
    return wrong == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
