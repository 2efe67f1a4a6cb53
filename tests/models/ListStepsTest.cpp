#include "models/ListSteps.h"

#include <gtest/gtest.h>

#include <QSet>
#include <QVector>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace list_steps_test {

namespace {

using sync::models::ListStep;
using sync::models::StepsBetween;
using Kind = ListStep::Kind;

constexpr int MaxSteps = 4;
constexpr int LargeSize = 10000;

std::vector<Kind> KindsOf(std::vector<ListStep> const& steps)
{
    std::vector<Kind> kinds;
    for (ListStep const& step : steps)
        kinds.push_back(step.kind);
    return kinds;
}

QVector<int> Numbers(int count)
{
    QVector<int> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 1);
    return numbers;
}

/// Expects that the steps lead from one list to the other, each within the list, and that an arrangement's rows say the
/// same as its ids.
void ExpectSteps(std::vector<ListStep> const& steps, QVector<int> list, QVector<int> const& after, int maxSteps)
{
    EXPECT_LE(steps.size(), static_cast<std::size_t>(maxSteps));
    QVector<int> const before = list;
    for (ListStep const& step : steps) {
        auto const size = static_cast<int>(list.size());
        ASSERT_TRUE(0 <= step.first && step.first <= size);
        switch (step.kind) {
        case Kind::Remove:
            ASSERT_TRUE(0 < step.count && step.first + step.count <= size);
            for (int const id : list.mid(step.first, step.count))
                EXPECT_FALSE(after.contains(id)) << "only what goes is removed";
            break;
        case Kind::Move:
            ASSERT_TRUE(step.first < size && 0 <= step.to && step.to <= size);
            ASSERT_TRUE(step.to != step.first && step.to != step.first + 1) << "no move to the same place";
            break;
        case Kind::Insert:
            ASSERT_FALSE(step.ids.isEmpty());
            for (int const id : step.ids)
                EXPECT_FALSE(before.contains(id)) << "only what came is inserted";
            break;
        case Kind::Arrange:
            ASSERT_EQ(step.rows.size(), step.ids.size());
            ASSERT_LE(step.first + step.rows.size(), size);
            for (int row = 0; row < step.rows.size(); ++row)
                ASSERT_EQ(step.ids.value(step.rows.at(row), -1), list.at(step.first + row));
            break;
        }
        Apply(step, list);
    }
    EXPECT_EQ(list, after);
}

TEST(ListSteps, BetweenEqualListsAreNone)
{
    EXPECT_TRUE(StepsBetween({}, {}, MaxSteps).empty());
    EXPECT_TRUE(StepsBetween({1, 2, 3}, {1, 2, 3}, MaxSteps).empty());
    EXPECT_TRUE(StepsBetween(Numbers(LargeSize), Numbers(LargeSize), MaxSteps).empty());
}

TEST(ListSteps, OfOneChangeAreOneStepForAnyLength)
{
    for (int const size : {5, LargeSize}) {
        QVector<int> const list = Numbers(size);
        QVector<int> longer = list;
        longer.insert(size / 2, size + 1);
        QVector<int> moved = list;
        moved.move(1, 3);
        EXPECT_EQ(KindsOf(StepsBetween(list, longer, MaxSteps)), std::vector<Kind>{Kind::Insert});
        EXPECT_EQ(KindsOf(StepsBetween(longer, list, MaxSteps)), std::vector<Kind>{Kind::Remove});
        EXPECT_EQ(KindsOf(StepsBetween(list, moved, MaxSteps)), std::vector<Kind>{Kind::Move});
        EXPECT_EQ(KindsOf(StepsBetween(list, {}, MaxSteps)), std::vector<Kind>{Kind::Remove});
        EXPECT_EQ(KindsOf(StepsBetween({}, list, MaxSteps)), std::vector<Kind>{Kind::Insert});
    }
}

TEST(ListSteps, OfChangesFarApartAreOneStepEach)
{
    QVector<int> const before = Numbers(LargeSize);
    QVector<int> after = before;
    after.removeFirst();
    after.insert(LargeSize / 2, LargeSize + 1);
    after.append(LargeSize + 2);
    std::vector<ListStep> const steps = StepsBetween(before, after, MaxSteps);
    EXPECT_EQ(KindsOf(steps), (std::vector<Kind>{Kind::Remove, Kind::Insert, Kind::Insert}));
    ExpectSteps(steps, before, after, MaxSteps);
}

TEST(ListSteps, OfAnotherOrderAreOneArrangement)
{
    QVector<int> const before = Numbers(LargeSize);
    QVector<int> after = before;
    std::reverse(after.begin() + 1, after.end());
    std::vector<ListStep> const steps = StepsBetween(before, after, MaxSteps);
    EXPECT_EQ(KindsOf(steps), std::vector<Kind>{Kind::Arrange});
    EXPECT_EQ(steps.front().first, 1) << "the first row stays";
    ExpectSteps(steps, before, after, MaxSteps);
}

TEST(ListSteps, OfChangesEverywhereAreFew)
{
    QVector<int> const before = Numbers(LargeSize);
    QVector<int> after;
    for (int const id : before) {
        if (id % 3 != 0)
            after.append(id);
        if (id % 5 == 0)
            after.append(LargeSize + id);
    }
    ExpectSteps(StepsBetween(before, after, MaxSteps), before, after, MaxSteps);
    std::reverse(after.begin(), after.end());
    ExpectSteps(StepsBetween(before, after, MaxSteps), before, after, MaxSteps);
}

TEST(ListSteps, LeadFromAnyListToAnyOther)
{
    std::mt19937 random(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
    auto const below = [&random](int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random); };
    auto const someOf = [&](QVector<int> ids, int kept) {
        std::shuffle(ids.begin(), ids.end(), random);
        ids.resize(kept);
        return ids;
    };
    for (int round = 0; round < 400; ++round) {
        int const size = round % 50 == 0 ? LargeSize : 1 + below(40);
        QVector<int> before = someOf(Numbers(size), below(size + 1));
        QVector<int> after = someOf(Numbers(size), below(size + 1));
        if (below(3) == 0) {
            std::sort(before.begin(), before.end());
            std::sort(after.begin(), after.end());
        }
        int const maxSteps = 4 + below(20);
        // The check of what came and went takes time in proportion to the square of the length.
        std::vector<ListStep> const steps = StepsBetween(before, after, maxSteps);
        if (size < LargeSize) {
            ExpectSteps(steps, before, after, maxSteps);
        }
        else {
            EXPECT_LE(steps.size(), static_cast<std::size_t>(maxSteps));
            for (ListStep const& step : steps)
                Apply(step, before);
            EXPECT_EQ(before, after);
        }
    }
}

} // namespace

} // namespace list_steps_test
