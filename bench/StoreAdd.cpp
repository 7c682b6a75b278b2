// Adding many addresses of real files at once to an empty shelf: the main
// thread's processor time, the time until the operation returns, and how the
// cost of one grows. Prints a figure a line: name, value, unit.
#include "StoreHome.h"

namespace {

struct Cost
{
    double processor = 0; // Seconds.
    double wall = 0;
};

Cost addOnce(StoreHome &home, const QList<QUrl> &urls)
{
    NativeFile::remove(FilePath::parent(home.stateFile()));
    const auto store = home.newStore();
    const double processor = seconds(CLOCK_THREAD_CPUTIME_ID);
    const double wall = seconds(CLOCK_MONOTONIC);
    store->add(urls);
    const Cost cost { seconds(CLOCK_THREAD_CPUTIME_ID) - processor,
                      seconds(CLOCK_MONOTONIC) - wall };
    if (store->items.value().size() != urls.size())
        std::printf("entries_lost %d entries\n", 1);
    return cost;
}

/// The median run's, which is reported; the result is the processor time of one entry.
double measure(StoreHome &home, const QList<QUrl> &urls, int runs)
{
    std::vector<double> processor;
    std::vector<double> wall;
    for (int i = 0; i < runs; ++i) {
        const Cost cost = addOnce(home, urls);
        processor.push_back(cost.processor);
        wall.push_back(cost.wall);
    }
    const int count = static_cast<int>(urls.size());
    std::printf("add_%d_processor %.2f ms\n", count, quantile(processor, 0.5) * 1e3);
    std::printf("add_%d_wall %.2f ms\n", count, quantile(wall, 0.5) * 1e3);
    return quantile(processor, 0.5) / count;
}

}

int main()
{
    StoreHome home;
    const auto files = home.makeFiles(100'000);
    measure(home, files.first(1000), 15);
    const double few = measure(home, files.first(10'000), 9);
    measure(home, files.first(30'000), 5);
    const double many = measure(home, files, 3);
    std::printf("cost_of_one_at_100000_to_10000 %.3f ratio\n", many / few);
    return 0;
}
