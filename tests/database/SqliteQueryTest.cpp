#include "config/ScheduleEntryManager.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlQueryWrapper.h"
#include "support/StoreFixture.h"

namespace {

using sync::database::TransactionalScope;

class SqliteQuery : public tandry::test::StoreFixture
{};

TEST_F(SqliteQuery, NewStoreHoldsTheDefaultSchedule)
{
    sync::config::ScheduleEntryManager manager(store);
    sync::config::ScheduleEntry const entry = manager.GetDefaultScheduleEntry();
    EXPECT_GT(entry.getId(), 0);
    EXPECT_EQ(entry.getFolderConfigId(), 0);
    EXPECT_FALSE(entry.getStartTime().isValid());
    EXPECT_FALSE(entry.getExpireTime().isValid());
    EXPECT_EQ(entry.getSyncScheduleType(), 0);
    EXPECT_EQ(entry.getSyncInterval(), 30);
}

TEST_F(SqliteQuery, RowWrittenInAScopeIsThereAfterReopening)
{
    {
        TransactionalScope const scope;
        auto const query = store->CreateQuery();
        ASSERT_TRUE(query->prepare(
            QStringLiteral("INSERT INTO ServerConfiguration (alias, davUrl) VALUES (:alias, :davUrl);")));
        query->bindValue(QStringLiteral(":alias"), QStringLiteral("first"));
        ASSERT_TRUE(query->exec());
        EXPECT_EQ(query->lastInsertId().toInt(), 1);
        EXPECT_EQ(query->numRowsAffected(), 1);
    }
    ReopenStore();
    auto const query = store->CreateQuery();
    query->prepare(QStringLiteral("SELECT alias, davUrl FROM ServerConfiguration"));
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    EXPECT_EQ(query->value(0), QVariant(QStringLiteral("first")));
    EXPECT_TRUE(query->value(1).isNull());
    EXPECT_FALSE(query->next());
}

} // namespace
