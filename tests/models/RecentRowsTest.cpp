#include "models/RecentRows.h"

#include <gtest/gtest.h>

#include <QVector>

namespace recent_rows_test {

namespace {

using sync::models::RecentRows;
using sync::models::RecordRow;

RecordRow RowOf(int id, int value = 0)
{
    return {id, {id, value}};
}

TEST(RecentRowsOfAModel, ForgetTheRowThatWasNotUsedForLongest)
{
    RecentRows rows(3);
    for (int const id : {1, 2, 3})
        EXPECT_TRUE(rows.Put(RowOf(id)));
    EXPECT_NE(rows.Use(1), nullptr);
    rows.Put(RowOf(4));
    EXPECT_EQ(rows.ids(), (QVector<int>{4, 1, 3}));
    EXPECT_EQ(rows.Use(2), nullptr);
    EXPECT_FALSE(rows.contains(2));
    EXPECT_TRUE(rows.contains(3));
}

TEST(RecentRowsOfAModel, TellWhetherValuesHaveChangedAndKeepTheOrder)
{
    RecentRows rows(3);
    rows.Put(RowOf(1));
    rows.Put(RowOf(2));
    EXPECT_FALSE(rows.Put(RowOf(1)));
    EXPECT_TRUE(rows.Put(RowOf(1, 7)));
    EXPECT_EQ(rows.ids(), (QVector<int>{2, 1})) << "a row that is read anew was not used";
    EXPECT_EQ(rows.Use(1)->values.at(1), 7);
}

TEST(RecentRowsOfAModel, AreNoneAfterClear)
{
    RecentRows rows(3);
    rows.Put(RowOf(1));
    rows.Clear();
    EXPECT_FALSE(rows.contains(1));
    EXPECT_TRUE(rows.ids().isEmpty());
    EXPECT_TRUE(rows.Put(RowOf(1)));
}

} // namespace

} // namespace recent_rows_test
