#include "models/RowDifference.h"

#include <gtest/gtest.h>

#include <QVector>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

namespace {

using sync::models::ApplyDifference;

struct NewRow
{
    int id;
    int value;
};

/// A list that counts what is done to it, and checks that each step is one.
class CountingList
{
public:
    explicit CountingList(std::vector<NewRow> const& shown)
        : rows(shown)
    {}

    int size() const { return static_cast<int>(rows.size()); }
    int id(int at) const { return rows.at(static_cast<std::size_t>(at)).id; }

    void Remove(int first, int last)
    {
        ASSERT_TRUE(0 <= first && first <= last && last < size());
        rows.erase(rows.begin() + first, rows.begin() + last + 1);
        removals.push_back(last - first + 1);
    }
    void Move(int from, int to)
    {
        ASSERT_TRUE(0 <= from && from < size() && 0 <= to && to <= size());
        ASSERT_TRUE(to != from && to != from + 1) << "what beginMoveRows refuses";
        NewRow const row = rows[static_cast<std::size_t>(from)];
        rows.erase(rows.begin() + from);
        rows.insert(rows.begin() + (from < to ? to - 1 : to), row);
        ++moves;
    }
    void Insert(int at, NewRow const* first, int count)
    {
        ASSERT_TRUE(0 <= at && at <= size() && count > 0);
        rows.insert(rows.begin() + at, first, first + count);
        insertions.push_back(count);
    }
    void Update(int at, NewRow const& row)
    {
        ASSERT_EQ(id(at), row.id);
        rows[static_cast<std::size_t>(at)] = row;
        updated.push_back(row.id);
    }

    std::vector<NewRow> rows;
    std::vector<int> removals;
    std::vector<int> insertions;
    std::vector<int> updated;
    int moves = 0;
};

std::vector<int> Ids(CountingList const& list)
{
    std::vector<int> ids;
    for (NewRow const& row : list.rows)
        ids.push_back(row.id);
    return ids;
}

CountingList Change(std::vector<int> const& from, std::vector<int> const& to)
{
    std::vector<NewRow> rows;
    for (int const id : from)
        rows.push_back({id, 0});
    QVector<NewRow> wanted;
    for (int const id : to)
        wanted.append({id, 1});
    CountingList list(rows);
    ApplyDifference(list, wanted, [](NewRow const& row) { return row.id; });
    EXPECT_EQ(Ids(list), to);
    EXPECT_TRUE(std::all_of(list.rows.begin(), list.rows.end(), [](NewRow const& row) { return row.value == 1; }));
    return list;
}

TEST(ADifferenceOfRows, OfEqualListsOnlyUpdates)
{
    CountingList const list = Change({3, 1, 2}, {3, 1, 2});
    EXPECT_EQ(list.updated, (std::vector<int>{3, 1, 2}));
    EXPECT_TRUE(list.removals.empty() && list.insertions.empty());
    EXPECT_EQ(list.moves, 0);
}

TEST(ADifferenceOfRows, GroupsNeighbours)
{
    EXPECT_EQ(Change({}, {1, 2, 3}).insertions, std::vector<int>{3});
    EXPECT_EQ(Change({1, 2, 3}, {}).removals, std::vector<int>{3});
    EXPECT_EQ(Change({1, 2, 3, 4, 5}, {3}).removals, (std::vector<int>{2, 2}));
    EXPECT_EQ(Change({3}, {1, 2, 3, 4, 5}).insertions, (std::vector<int>{2, 2}));
}

TEST(ADifferenceOfRows, MovesOneRowToEitherEndOnce)
{
    EXPECT_EQ(Change({1, 2, 3, 4}, {2, 3, 4, 1}).moves, 1);
    EXPECT_EQ(Change({1, 2, 3, 4}, {4, 1, 2, 3}).moves, 1);
    EXPECT_EQ(Change({1, 2, 3, 4}, {4, 3, 2, 1}).moves, 3);
}

/// The length of the longest common part, which need not move, by trying all.
std::size_t MostThatStay(std::vector<int> const& places)
{
    std::vector<std::size_t> longest(places.size(), 1);
    std::size_t most = 0;
    for (std::size_t last = 0; last < places.size(); ++last) {
        for (std::size_t before = 0; before < last; ++before) {
            if (places[before] < places[last])
                longest[last] = std::max(longest[last], longest[before] + 1);
        }
        most = std::max(most, longest[last]);
    }
    return most;
}

TEST(ADifferenceOfRows, OfRandomListsMovesNoMoreThanItMust)
{
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    auto const some = [&random] {
        std::vector<int> ids(std::uniform_int_distribution<std::size_t>(0, 12)(random));
        std::set<int> used;
        for (int& id : ids) {
            do
                id = std::uniform_int_distribution<int>(0, 20)(random);
            while (!used.insert(id).second);
        }
        return ids;
    };
    for (int round = 0; round < 2000; ++round) {
        std::vector<int> const from = some();
        std::vector<int> const to = some();
        std::vector<int> places;
        for (int const id : to) {
            auto const found = std::find(from.begin(), from.end(), id);
            if (found != from.end())
                places.push_back(static_cast<int>(found - from.begin()));
        }
        CountingList const list = Change(from, to);
        EXPECT_LE(static_cast<std::size_t>(list.moves), places.size() - MostThatStay(places));
        EXPECT_EQ(list.updated.size(), places.size());
    }
}

} // namespace
