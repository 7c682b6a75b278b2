#include "StorePair.h"

#include <iterator>
#include <random>
#include <sstream>
#include <string_view>

namespace {

/// What the numbers mean depends on the moment, so that a sequence from which
/// others were taken still means something.
struct Operation
{
    std::string_view name;
    std::array<int, 3> numbers {};
};
using Operations = std::vector<Operation>;
using Numbers = StorePair::Numbers;

QString q(const char *text)
{
    return QString::fromUtf8(text);
}

/// Up to 7 a row of the current shelf, then whatever entry was ever made.
int entryAt(StorePair &pair, int number)
{
    const auto &rows = pair.model.items();
    if (number < 8)
        return number < int(rows.size()) ? rows[number].number : StorePair::none;
    return number - 8 < pair.model.entryCount ? number - 8 : StorePair::none;
}

/// 1 is the current shelf, the others up to 8 the open ones, then the closed ones.
int shelfAt(StorePair &pair, int number)
{
    if (number == 1)
        return pair.model.current;
    const auto &list = number <= 8 ? pair.model.shelves : pair.model.closed;
    const int index = number == 0 ? 0 : (number - 1) % 8;
    return index < int(list.size()) ? list[index].number : StorePair::none;
}

int placeAt(StorePair &pair, int number)
{
    return number < pair.model.placeCount ? number : StorePair::none;
}

/// An operation's numbers in all their meanings, and what it is done to.
struct Call
{
    Call(StorePair &both, const std::array<int, 3> &numbers)
        : pair(both)
        , s(*both.store)
        , m(both.model)
        , a(numbers[0])
        , b(numbers[1])
        , c(numbers[2])
        , entry(entryAt(pair, a))
        , shelf(shelfAt(pair, a))
        , place(placeAt(pair, a))
        , entries { entry, entryAt(pair, b), entryAt(pair, c) }
        , places { place, placeAt(pair, b), placeAt(pair, c) }
    {
    }

    QSet<QUuid> ids() const { return pair.ids(entries); }
    QUuid shelfId() const { return pair.shelfId(shelf); }
    QUrl url(int index) const { return pair.url(places.at(index)); }

    StorePair &pair;
    ShelfStore &s;
    ModelStore &m;
    int a, b, c, entry, shelf, place;
    Numbers entries;
    std::vector<int> places;
};

struct Kind
{
    std::string_view name;
    int weight;
    std::array<int, 3> limits; // Each number is below its limit.
    void (*run)(const Call &x);
};

const std::array links { "https://a.org/x", "https://b.org", "https://c.org/y" };
/// What an address may end in; with some of them it is no address.
const std::array tails { "", "%7e", "/%C3%a9", "?x=%2f", "#b", "#", "[::1", "/100%" };
// A letter and its accent are one character of the forty.
const std::array names { "Work", "  Home \u2028", "Shelf 3", " \t",
                         "123456789012345678901234567890123456789e\u0301 and more" };
const std::array trimmed { "Work", "Home", "Shelf 3", "",
                           "123456789012345678901234567890123456789e\u0301" };
const std::array ages { 0.5, 1.0, 60.0, 3600.0, 0.0, -1.0 };
const std::array steps { 1, -1, 0, 3, -100 };
const std::array pauses { 1, 2, 59, 60, 3600 };
const std::array clicks { ModelStore::Click::Plain, ModelStore::Click::Shift,
                          ModelStore::Click::Command, ModelStore::Click::Command };
const std::array<Modifiers, 4> modifiers { 0, EventModifier::Shift, EventModifier::Command,
                                           EventModifier::Command | EventModifier::Shift };

void passTime(const Call &x, double seconds)
{
    x.pair.world.queue.advance(seconds);
    x.m.advance(seconds);
}

void toggleUpload(const Call &x)
{
    for (const auto &shelf : x.m.shelves) {
        if (ModelStore::indexOf(shelf.items, x.entry) >= 0)
            return x.pair.toggleUpload(x.entry);
    }
}

/// Creates, deletes or moves a file, or changes what is known of its place.
void changeDisk(const Call &x)
{
    auto &disk = x.m.disk;
    const Numbers before = disk.silent;
    const Numbers volume { 2, 3, 4 };
    const auto toggle = [&x](Numbers &places) {
        if (!places.erase(x.place))
            places.insert(x.place);
    };
    if (x.place == StorePair::none)
        return;
    if (x.c == 0)
        x.pair.moveFile(x.place, x.b);
    else if (x.c <= 2)
        x.pair.deleteFile(x.place);
    else if (x.c == 3)
        x.pair.createFile(x.place);
    else if (x.c < 6)
        toggle(x.c == 4 ? disk.trash : disk.silent);
    else // A volume is away or back.
        std::set_symmetric_difference(before.begin(), before.end(), volume.begin(), volume.end(),
                                      std::inserter(disk.silent = {}, disk.silent.end()));
    if (x.c == 2)
        toggle(disk.searching); // Only what is missing is searched for.
    x.pair.tellBookmarks();
}

// clang-format off
const std::array kinds {
    Kind { "Add", 8, { 12, 12, 12 }, [](const Call &x) {
        x.s.add({ x.url(0), x.url(1), x.url(2) }); x.m.add(x.places); } },
    Kind { "Text", 6, {}, [](const Call &x) {
        x.s.addText(q("\n  some \nwords")); x.m.addText("some"); } },
    Kind { "Link", 3, { 3, 8, 8 }, [](const Call &x) {
        const auto text = links[x.a] + std::string(tails[x.b]) + tails[x.c];
        x.s.addText(q(text.c_str()));
        if (const auto address = WebAddress::typed(q(text.c_str())))
            x.m.addLink(address->text().toStdString(),
                        ShelfStore::linkTitle(*address).toStdString());
        else
            x.m.addText(text); } },
    Kind { "Image", 2, {}, [](const Call &x) { // Two files on their way cannot have one name.
        passTime(x, 1); x.s.addImageData("bytes", {}); x.m.addImage(); } },
    Kind { "Remove", 5, { 24, 24, 24 }, [](const Call &x) {
        x.s.removeIds(x.ids()); x.m.remove(x.entries); } },
    Kind { "RemoveSelected", 1, {}, [](const Call &x) { // The very set that changes.
        x.s.removeIds(x.s.selection.value()); x.m.remove(Numbers(x.m.selection)); } },
    Kind { "RemoveUrls", 1, { 12, 12, 3 }, [](const Call &x) {
        x.s.removeUrls({ x.url(0), x.url(1), QUrl(q(links[x.c])) });
        x.m.removeUrls({ x.places[0], x.places[1] }, { links[x.c] }); } },
    Kind { "Clear", 1, {}, [](const Call &x) { x.s.clear(); x.m.clear(); } },
    Kind { "Undo", 4, {}, [](const Call &x) {
        x.pair.sameReturned = x.s.undoRemove() == x.m.undo(); } },
    Kind { "Prune", 4, { 6 }, [](const Call &x) {
        x.s.pruneExpired(ages[x.a]); x.m.prune(ages[x.a]); } },
    Kind { "Switch", 6, { 14 }, [](const Call &x) {
        x.s.switchTo(x.shelfId()); x.m.switchTo(x.shelf); } },
    Kind { "SwitchIndex", 1, { 9 }, [](const Call &x) {
        x.s.switchToIndex(x.a - 1);
        if (x.a > 0 && x.a <= int(x.m.shelves.size()))
            x.m.switchTo(x.m.shelves[x.a - 1].number); } },
    Kind { "New", 3, {}, [](const Call &x) { x.s.newShelf(); x.m.newShelf(); } },
    Kind { "Rename", 1, { 14, 5 }, [](const Call &x) {
        x.s.renameShelf(x.shelfId(), q(names[x.b])); x.m.rename(x.shelf, trimmed[x.b]); } },
    Kind { "Pin", 4, { 14 }, [](const Call &x) {
        x.s.togglePin(x.shelfId()); x.m.togglePin(x.shelf); } },
    Kind { "Close", 6, { 10 }, [](const Call &x) {
        x.s.closeShelf(x.shelfId()); x.m.close(x.shelf); } },
    Kind { "Reopen", 3, { 14 }, [](const Call &x) { // Mostly one that is closed.
        const int shelf = shelfAt(x.pair, (x.a + 9) % 14);
        x.s.reopenShelf(x.pair.shelfId(shelf)); x.m.reopen(shelf); } },
    Kind { "Move", 4, { 24, 14 }, [](const Call &x) {
        const int shelf = shelfAt(x.pair, x.b);
        x.s.move(x.ids(), x.pair.shelfId(shelf)); x.m.move(x.entries, shelf); } },
    Kind { "MoveSelected", 1, { 14 }, [](const Call &x) {
        x.s.move(x.s.selection.value(), x.shelfId());
        x.m.move(Numbers(x.m.selection), x.shelf); } },
    Kind { "MoveToNew", 4, { 24, 24, 24 }, [](const Call &x) {
        x.s.move(x.ids(), std::nullopt); x.m.move(x.entries, std::nullopt); } },
    Kind { "Click", 3, { 24, 4 }, [](const Call &x) {
        x.s.click(x.pair.id(x.entry), modifiers[x.b]); x.m.click(x.entry, clicks[x.b]); } },
    Kind { "Step", 2, { 5, 2 }, [](const Call &x) {
        x.s.moveSelection(steps[x.a], x.b ? ShelfStore::Extend::Yes : ShelfStore::Extend::No);
        x.m.moveSelection(steps[x.a], x.b != 0); } },
    Kind { "SelectAll", 1, {}, [](const Call &x) { x.s.selectAll(); x.m.selectAll(); } },
    Kind { "DeselectAll", 1, {}, [](const Call &x) { x.s.deselectAll(); x.m.deselectAll(); } },
    Kind { "Press", 1, { 10 }, [](const Call &x) {
        x.s.pressedID = x.pair.id(x.entry); x.m.pressed = x.entry; } },
    Kind { "Upload", 2, { 24 }, toggleUpload },
    Kind { "Refresh", 4, {}, [](const Call &x) {
        x.s.refreshLocationsInBackground(); x.m.refresh(); } },
    Kind { "Check", 5, {}, [](const Call &x) { // From the request to its result.
        x.s.refreshLocationsInBackground(); x.m.refresh();
        while (x.m.jobCount() > 0)
            x.pair.runJob(0);
        passTime(x, 0); } },
    Kind { "Work", 7, { 3 }, [](const Call &x) { x.pair.runJob(x.a); } },
    Kind { "Deliver", 4, {}, [](const Call &x) { passTime(x, 0); } },
    Kind { "Advance", 3, { 5 }, [](const Call &x) { passTime(x, pauses[x.a]); } },
    Kind { "Disk", 12, { 12, ModelState::userPlaces, 7 }, changeDisk },
    Kind { "Restart", 2, { 8 }, [](const Call &x) {
        using enum ModelStore::StateFile;
        x.pair.restart(x.a == 7 ? Unreadable : x.a == 6 ? Cleared : Whole); } },
};
// clang-format on

const Kind &kindOf(const Operation &operation)
{
    return *std::find_if(kinds.begin(), kinds.end(),
                         [&](const Kind &kind) { return kind.name == operation.name; });
}

/// The first difference between store and model; empty if there is none.
std::string firstDifference(World &world, const Operations &operations)
{
    StorePair pair(world);
    for (const Operation &operation : operations) {
        kindOf(operation).run({ pair, operation.numbers });
        if (auto difference = pair.difference(); !difference.empty())
            return difference;
    }
    return pair.differenceOfUsersFiles();
}

/// Some kinds often, the rest seldom: that leads deeper than an even mixture.
Operations randomOperations(quint32 seed)
{
    std::mt19937 random(seed);
    std::vector<size_t> pool;
    for (size_t kind = 0; kind < kinds.size(); ++kind)
        pool.insert(pool.end(), kinds[kind].weight, kind);
    std::vector<size_t> favourites(3 + random() % 4);
    for (size_t &favourite : favourites)
        favourite = pool[random() % pool.size()];
    // Some begin with several shelves, some of them closed.
    Operations operations;
    for (auto shelves = random() % 16 < 4 ? random() % 8 : 0; shelves > 0; --shelves) {
        operations.insert(operations.end(), { { "Text" }, { "MoveToNew" } });
        if (random() % 4 != 0)
            operations.push_back({ "Close", { 2 } });
    }
    for (auto left = 10 + random() % 31; left > 0; --left) {
        const bool often = random() % 4 != 0;
        const size_t kind
            = often ? favourites[random() % favourites.size()] : pool[random() % pool.size()];
        Operation operation { kinds[kind].name };
        for (size_t i = 0; i < operation.numbers.size(); ++i) {
            const int limit = std::max(kinds[kind].limits[i], 1);
            // Small numbers are the rows and shelves that are most likely there.
            operation.numbers[i] = int(random() % (random() % 2 == 0 ? std::min(limit, 3) : limit));
        }
        operations.push_back(operation);
    }
    return operations;
}

/// Without all that is not needed to fail.
Operations shrink(Operations operations, const std::function<bool(const Operations &)> &fails)
{
    for (size_t at = 0; at < operations.size();) {
        Operations smaller = operations;
        smaller.erase(smaller.begin() + qsizetype(at));
        const bool isEnough = fails(smaller);
        at = isEnough ? 0 : at + 1;
        if (isEnough)
            operations = smaller;
    }
    return operations;
}

/// As source for a test of its own.
std::string toSource(const Operations &operations)
{
    std::ostringstream source;
    source << "    World world;\n    EXPECT_EQ(firstDifference(world, {\n";
    for (const auto &[name, n] : operations)
        source << "        { \"" << name << "\", { " << n[0] << ", " << n[1] << ", " << n[2]
               << " } },\n";
    source << "    }), \"\");\n";
    return source.str();
}

int fromEnvironment(const char *name, int otherwise)
{
    bool isNumber = false;
    const int value = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? value : otherwise;
}

}

/// VANTLE_PROPERTY_SEQUENCES: how many. VANTLE_PROPERTY_SEED: of the first; each
/// sequence has the next one.
TEST(PropertyTest, WhateverIsDoneTheStoreIsLikeItsModel)
{
    const int count = fromEnvironment("VANTLE_PROPERTY_SEQUENCES", 2000);
    const int first = fromEnvironment("VANTLE_PROPERTY_SEED", 1);
    World world;
    for (int seed = first; seed < first + count; ++seed) {
        const Operations operations = randomOperations(seed);
        if (firstDifference(world, operations).empty())
            continue;
        const Operations shortest = shrink(operations, [&](const Operations &smaller) {
            return !firstDifference(world, smaller).empty();
        });
        FAIL() << "VANTLE_PROPERTY_SEED=" << seed << ", " << operations.size()
               << " operations, of which " << shortest.size() << " are enough:\n"
               << toSource(shortest) << firstDifference(world, shortest);
    }
}
