// How long it takes to find a moved file by its identity, beside find(1) in the same tree: half a
// million entries in ten thousand folders, made at the first run and kept.
//   bench_find_moved FOLDER [WARM_ROUNDS [COLD_ROUNDS]]
// Cold rounds empty the kernel's caches, for which one must be root. Prints medians, one figure a
// line: name, value, unit. Ratios are the medians of each round's.
#include "platform/linux/files/InodeSearch.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int leaves = 10'000;
constexpr int filesInEach = 49;
constexpr InodeSearch::Limits unlimited { 600, 100'000'000 };

void demand(bool condition, const char *what)
{
    if (!condition)
        throw std::runtime_error(what);
}

void makeFile(const fs::path &path)
{
    const int file = open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    demand(file >= 0 && close(file) == 0, "A file cannot be made.");
}

fs::path leaf(const fs::path &tree, int number)
{
    const auto part = [](const char *name, int n) { return name + std::to_string(n); };
    return tree / part("year ", number / 1000) / part("month ", number / 100 % 10)
        / part("project ", number % 100);
}

void makeTree(const fs::path &tree)
{
    const fs::path mark = tree.string() + ".complete";
    if (fs::exists(mark))
        return;
    fs::remove_all(tree);
    for (int folder = 0; folder < leaves; ++folder) {
        const fs::path path = leaf(tree, folder);
        fs::create_directories(path);
        for (int file = 0; file < filesInEach; ++file)
            makeFile(path / ("document " + std::to_string(file) + ".txt"));
    }
    makeFile(mark);
}

/// A tree with one file that moves about in it.
class World
{
public:
    explicit World(const fs::path &folder)
        : m_tree(folder / "find-moved-tree")
        , m_file(folder / "find-moved-file")
    {
        makeTree(m_tree);
        for (int number = 0; number < leaves; ++number)
            fs::remove(leaf(m_tree, number) / "moved"); // Of a run that was interrupted.
        makeFile(m_file);
        m_identity = lookAt(QByteArray::fromStdString(m_file.string())).identity;
    }
    World(const World &) = delete;
    World &operator=(const World &) = delete;
    ~World() { fs::remove(m_file); }

    void moveToRandomLeaf() { moveTo(leaf(m_tree, m_leaf(m_random)) / "moved"); }
    void moveOut() { moveTo(m_tree.parent_path() / "find-moved-file"); }

    /// Milliseconds that each way takes, which alternate in being the first.
    std::map<std::string, double> round(bool cold)
    {
        const bool inside = m_file.filename() == "moved";
        std::vector<std::pair<std::string, std::function<void()>>> ways {
            { "search", [this, inside] { search(inside); } },
            { "find", [this] { find({}); } },
        };
        if (inside)
            ways.emplace_back("find_quit", [this] { find({ "-quit" }); });
        std::rotate(ways.begin(), ways.begin() + m_turn++ % static_cast<int>(ways.size()),
                    ways.end());
        std::map<std::string, double> result;
        for (const auto &[name, way] : ways) {
            if (cold)
                emptyCaches();
            const auto start = Clock::now();
            way();
            result[name] = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        }
        return result;
    }

private:
    void moveTo(const fs::path &path)
    {
        fs::rename(m_file, path);
        m_file = path;
    }

    void search(bool inside)
    {
        const std::atomic<bool> cancelled = false;
        InodeSearch search({ m_identity }, unlimited, cancelled);
        search.walk(QByteArray::fromStdString(m_tree.string()), *m_mounts.current());
        demand(search.isWhole(), "The search was not whole.");
        demand(search.found().size() == (inside ? 1 : 0), "The search found something else.");
        if (inside)
            demand(search.found().value(m_identity).toStdString() == m_file,
                   "It is not the file's path.");
    }

    void find(const std::vector<std::string> &more) const
    {
        std::vector<std::string> words { "find", m_tree.string(), "-inum",
                                         std::to_string(m_identity.inode), "-print" };
        words.insert(words.end(), more.begin(), more.end());
        std::vector<char *> arguments;
        arguments.reserve(words.size() + 1);
        for (std::string &word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        pid_t process = 0;
        demand(posix_spawnp(&process, "find", &files, nullptr, arguments.data(), environ) == 0,
               "There is no find.");
        int status = 0;
        waitpid(process, &status, 0);
        posix_spawn_file_actions_destroy(&files);
        demand(status == 0, "find failed.");
    }

    static void emptyCaches()
    {
        sync();
        std::ofstream caches("/proc/sys/vm/drop_caches");
        demand(!!(caches << "3" << std::flush), "The caches cannot be emptied.");
    }

    fs::path m_tree;
    fs::path m_file;
    FileIdentity m_identity;
    MountTable m_mounts { "/proc/self/mountinfo" };
    std::mt19937 m_random { 4711 };
    std::uniform_int_distribution<int> m_leaf { 0, leaves - 1 };
    int m_turn = 0;
};

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

void measure(World &world, const std::string &title, int rounds, bool cold)
{
    for (const bool inside : { true, false }) {
        std::map<std::string, std::vector<double>> times;
        std::map<std::string, std::vector<double>> ratios;
        for (int round = 0; round < rounds; ++round) {
            if (inside)
                world.moveToRandomLeaf();
            else
                world.moveOut();
            const auto figures = world.round(cold);
            for (const auto &[name, time] : figures) {
                times[name].push_back(time);
                if (name != "search")
                    ratios[name].push_back(figures.at("search") / time);
            }
        }
        const std::string start = title + (inside ? "_moved_" : "_absent_");
        for (const auto &[name, values] : times)
            std::printf("%s%s %.1f ms\n", start.c_str(), name.c_str(), median(values));
        for (const auto &[name, values] : ratios)
            std::printf("%sratio_to_%s %.2f x\n", start.c_str(), name.c_str(), median(values));
        std::fflush(stdout);
    }
}

}

int main(int argc, char **argv)
{
    if (argc < 2)
        return 2;
    const int warmRounds = argc > 2 ? std::atoi(argv[2]) : 15;
    const int coldRounds = argc > 3 ? std::atoi(argv[3]) : 9;
    try {
        fs::create_directories(argv[1]);
        World world(fs::canonical(argv[1]));
        world.round(false); // Warms the caches.
        if (warmRounds > 0)
            measure(world, "warm", warmRounds, false);
        if (coldRounds > 0 && access("/proc/sys/vm/drop_caches", W_OK) == 0)
            measure(world, "cold", coldRounds, true);
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
