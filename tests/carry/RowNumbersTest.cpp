#include "tools/carry/RowNumbers.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>

using tandry::carry::RowNumbers;

TEST(RowNumbersTest, FollowTheOrderOfTheIds)
{
    RowNumbers numbers;
    for (qint32 const id : {3, 4, 5, 9, 11})
        numbers.Append(id);
    EXPECT_EQ(numbers.count(), 5);
    EXPECT_EQ(numbers.Of(3), 1);
    EXPECT_EQ(numbers.Of(5), 3);
    EXPECT_EQ(numbers.Of(9), 4);
    EXPECT_EQ(numbers.Of(11), 5);
    for (qint64 const id : {qint64(-1),
                            qint64(0),
                            qint64(2),
                            qint64(6),
                            qint64(8),
                            qint64(10),
                            qint64(12),
                            std::numeric_limits<qint64>::max(),
                            std::numeric_limits<qint64>::min()})
        EXPECT_FALSE(numbers.Of(id)) << id;
}

TEST(RowNumbersTest, OfNoRowsThereAreNone)
{
    RowNumbers const numbers;
    EXPECT_EQ(numbers.count(), 0);
    EXPECT_FALSE(numbers.Of(1));
}

TEST(RowNumbersTest, AreThoseOfAMapForAnyIds)
{
    std::mt19937 random(7);
    RowNumbers numbers;
    std::map<qint64, qint32> expected;
    qint64 id = std::numeric_limits<qint32>::min();
    for (int i = 0; i < 20'000; ++i) {
        numbers.Append(qint32(id));
        expected.emplace(id, i + 1);
        id += random() % 3 == 0 ? qint64(1 + random() % 100'000) : 1;
    }
    for (auto const& [known, number] : expected) {
        ASSERT_EQ(numbers.Of(known), number);
        ASSERT_EQ(numbers.Of(known + 1).has_value(), expected.count(known + 1) == 1);
    }
}
