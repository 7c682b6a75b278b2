// A burst of new files in a watched folder: whether all arrive once and in
// order, when the last one arrives, and what the main thread spends on it.
#include "base/FilePath.h"
#include "base/NativeFile.h"
#include "base/QtMainQueue.h"
#include "base/ThreadWorkers.h"
#include "panel/FolderWatcher.h"
#include "platform/linux/files/InotifyFolders.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int burst = 10000; // Files.

double threadSeconds()
{
    timespec time {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Measures what each event costs the main thread.
class Application final : public QCoreApplication
{
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        const double start = threadSeconds();
        const bool result = QCoreApplication::notify(receiver, event);
        worst = std::max(worst, threadSeconds() - start);
        return result;
    }

    double worst = 0; // Seconds.
};

void makeFiles(const QByteArray &folder)
{
    for (int i = 0; i < burst; ++i) {
        const QByteArray name = folder + "/shot " + QByteArray::number(i).rightJustified(6, '0');
        const int file = ::open(name.constData(), O_CREAT | O_WRONLY, 0600);
        if (::write(file, "bytes", 5) != 5)
            std::perror("write");
        ::close(file);
    }
}

}

int main(int argc, char **argv)
{
    Application application(argc, argv);
    QTemporaryDir directory;
    const QByteArray folder = directory.path().toUtf8();
    QtMainQueue queue;
    InotifyFolders events(queue);
    ThreadWorkers workers;
    FolderWatcher watcher(events, queue, workers);
    QSet<QUrl> seen;
    int calls = 0;
    bool ordered = true;
    bool once = true;
    watcher.onNewFiles = [&](const QList<QUrl> &urls) {
        ++calls;
        ordered
            = ordered && std::is_sorted(urls.begin(), urls.end(), [](const QUrl &a, const QUrl &b) {
                  return FilePath::fromUrl(a) < FilePath::fromUrl(b);
              });
        for (const QUrl &url : urls) {
            once = once && !seen.contains(url);
            seen.insert(url);
        }
        if (seen.size() == burst)
            QCoreApplication::quit();
    };
    watcher.watch({ folder });
    double written = 0;
    std::thread writer;
    const auto start = queue.after(0.5, [&] {
        application.worst = 0;
        writer = std::thread([&] {
            makeFiles(folder);
            written = queue.uptime();
        });
    });
    const auto limit = queue.after(60, [] { QCoreApplication::exit(1); });
    const int result = QCoreApplication::exec();
    const double end = queue.uptime();
    writer.join();
    std::printf("files %lld\ncalls %d\nin_order %d\nonce %d\n", static_cast<long long>(seen.size()),
                calls, ordered ? 1 : 0, once ? 1 : 0);
    std::printf("last_file_to_last_call %.3f s\nworst_event_cpu %.2f ms\n", end - written,
                application.worst * 1000);
    return result;
}
