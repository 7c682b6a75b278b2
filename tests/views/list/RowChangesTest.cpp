#include "views/list/RowChanges.h"
#include "views/list/ItemListModel.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

namespace {

using Random = std::mt19937;

ShelfItem item(int number)
{
    ShelfItem result;
    result.id = QUuid::fromString(
        QStringLiteral("00000000-0000-0000-0000-%1").arg(number, 12, 10, QChar(u'0')));
    result.url = QUrl(QStringLiteral("file:///f%1").arg(number));
    return result;
}

int below(Random &random, int limit)
{
    return limit <= 0 ? 0 : std::uniform_int_distribution(0, limit - 1)(random);
}

QList<ShelfItem> someItems(Random &random, int first, int count)
{
    QList<ShelfItem> items;
    for (int i = 0; i < count; ++i)
        items.append(item(first + i));
    std::shuffle(items.begin(), items.end(), random);
    return items;
}

/// The next list: some of the old leave, move or change, and new ones come.
QList<ShelfItem> varied(QList<ShelfItem> items, Random &random)
{
    for (int edits = below(random, 8); edits > 0; --edits) {
        const int size = static_cast<int>(items.size());
        const int kind = size == 0 ? 0 : below(random, 4);
        if (kind == 0)
            items.insert(below(random, size + 1), item(1000 + below(random, 2'000'000'000)));
        else if (kind == 1)
            items.removeAt(below(random, size));
        else if (kind == 2)
            items.move(below(random, size), below(random, size));
        else
            items[below(random, size)].addedAt += 1;
    }
    return items;
}

qsizetype rowOf(const QList<ShelfItem> &items, const QUuid &id)
{
    return std::ranges::find(items, id, &ShelfItem::id) - items.begin();
}

/// What the fewest steps are, found the slow way.
struct Least
{
    int removed = 0, inserted = 0, moved = 0, updated = 0;
    bool operator==(const Least &) const = default;
};

Least leastFor(const QList<ShelfItem> &before, const QList<ShelfItem> &after)
{
    Least least;
    std::vector<qsizetype> survivors;
    for (const auto &entry : before) {
        const auto row = rowOf(after, entry.id);
        if (row == after.size()) {
            ++least.removed;
            continue;
        }
        survivors.push_back(row);
        least.updated += after[row] != entry;
    }
    for (const auto &entry : after)
        least.inserted += rowOf(before, entry.id) == before.size();
    std::vector<int> run(survivors.size(), 1); // Longest increasing run that ends here.
    for (size_t i = 0; i < survivors.size(); ++i) {
        for (size_t j = 0; j < i; ++j) {
            if (survivors[j] < survivors[i])
                run[i] = std::max(run[i], run[j] + 1);
        }
    }
    const int longest = run.empty() ? 0 : *std::ranges::max_element(run);
    least.moved = static_cast<int>(survivors.size()) - longest;
    return least;
}

int countOf(const RowChanges &changes, RowChange::Kind kind)
{
    int count = 0;
    for (const auto &change : changes) {
        if (change.kind == kind)
            count += kind == RowChange::Kind::Move ? 1 : change.count;
    }
    return count;
}

}

/// The model's own tester fails on any signal that does not fit the rows.
TEST(RowChangesTest, LeadFromAnyListToAnyOtherByTheFewestStepsWhichViewsCanFollow)
{
    ItemListModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Warning);
    for (unsigned seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const auto before
            = seed % 10 == 0 ? someItems(random, 0, below(random, 25)) : model.items();
        const auto after = seed % 10 == 1 ? someItems(random, below(random, 20), below(random, 25))
                                          : varied(before, random);
        model.update(before);
        QList<QPersistentModelIndex> held;
        for (int row = 0; row < model.rowCount(); ++row)
            held.append(model.index(row));
        const auto changes = model.update(after);
        ASSERT_TRUE(changes);
        ASSERT_EQ(model.items(), after);
        using enum RowChange::Kind;
        ASSERT_EQ((Least { countOf(*changes, Remove), countOf(*changes, Insert),
                           countOf(*changes, Move), countOf(*changes, Update) }),
                  leastFor(before, after));
        for (int row = 0; row < before.size(); ++row) {
            const auto now = rowOf(after, before[row].id);
            ASSERT_EQ(held[row].row(), now == after.size() ? -1 : now) << "row " << row;
            if (now < after.size()) {
                ASSERT_EQ(previousRow(*changes, static_cast<int>(now)), row);
            }
        }
    }
}

TEST(RowChangesTest, BeginAnewWhereTooMuchChangedOrAnIdOccursTwice)
{
    Random random(3);
    auto all = someItems(random, 0, 1000);
    auto shuffled = all;
    std::shuffle(shuffled.begin(), shuffled.end(), random);
    EXPECT_FALSE(rowChanges(all, shuffled));
    QList<ShelfItem> odd;
    for (int row = 1; row < all.size(); row += 2)
        odd.append(all[row]);
    EXPECT_FALSE(rowChanges(all, odd));
    EXPECT_EQ(rowChanges(all, all.mid(0, 100) + all.mid(300)),
              (RowChanges { { RowChange::Kind::Remove, 100, 200, 0 } }));
    EXPECT_FALSE(rowChanges({ item(1) }, { item(2), item(3), item(2) }));
    EXPECT_FALSE(rowChanges({ item(2), item(3), item(2) }, { item(3), item(2), item(4) }));
}
