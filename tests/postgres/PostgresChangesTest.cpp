#include "database/StoreChanges.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "postgres/support/StoreFixture.h"
#include "support/Queries.h"

#include <poll.h>

namespace postgres_changes_test {
namespace {

using namespace sync::database;
using namespace tandry::test;

class PostgresChangesOfAProfile : public StoreFixture
{
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        ASSERT_TRUE(store->SetNotices(true));
        changes = store->WatchChanges();
        ASSERT_NE(changes, nullptr);
    }

    void TearDown() override
    {
        changes.reset();
        store.reset();
    }

    /// Returns the next sight that shows something.
    static StoreChanges::Sight Next(StoreChanges& watched)
    {
        StoreChanges::Sight sight;
        pollfd waiting = {watched.descriptor(), POLLIN, 0};
        while (sight.tables.isEmpty() && !sight.error && ::poll(&waiting, 1, 60'000) == 1)
            sight = watched.Look();
        return sight;
    }

    QStringList NextTables()
    {
        StoreChanges::Sight const sight = Next(*changes);
        EXPECT_FALSE(sight.error) << sight.error->text.toStdString();
        return sight.tables;
    }

    std::unique_ptr<StoreChanges> changes;
};

QStringList Names(char const* names)
{
    return QString::fromUtf8(names).split(QLatin1Char(' '));
}

TEST_F(PostgresChangesOfAProfile, NameTheTablesThatACommitHasWrittenTo)
{
    EXPECT_TRUE(changes->Look().tables.isEmpty());
    ASSERT_TRUE(AddServer(*store, QStringLiteral("a")));
    EXPECT_EQ(NextTables(), Names("ServerConfiguration"));
    auto const other = PostgresDatabaseFactory::Open(StorePath());
    ASSERT_NE(other, nullptr);
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Execute(*other, QStringLiteral("UPDATE Schedules SET syncInterval = 7")));
        ASSERT_TRUE(AddServer(*other, QStringLiteral("b")));
    }
    EXPECT_EQ(NextTables(), Names("ServerConfiguration Schedules"));
    EXPECT_TRUE(changes->Look().tables.isEmpty());
}

TEST_F(PostgresChangesOfAProfile, DoNotTellOfARollback)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(AddServer(*store, QStringLiteral("a")));
    ASSERT_TRUE(database->rollback());
    ASSERT_TRUE(Execute(*store, QStringLiteral("UPDATE Schedules SET syncInterval = 7")));
    EXPECT_EQ(NextTables(), Names("Schedules"));
}

TEST_F(PostgresChangesOfAProfile, NameAllTablesAfterALostConnectionAndGoOn)
{
    int const descriptor = changes->descriptor();
    ServerRawStore(StorePath())
        .Run(QStringLiteral(
            "SELECT pg_terminate_backend(pid, 10000) FROM pg_stat_activity WHERE query LIKE 'SELECT 1 FROM "
            "pg_catalog.pg_proc%' AND application_name = 'tandry'"));
    EXPECT_EQ(NextTables().size(), 8);
    EXPECT_EQ(changes->descriptor(), descriptor);
    ASSERT_TRUE(AddServer(*store, QStringLiteral("a")));
    EXPECT_EQ(NextTables(), Names("ServerConfiguration"));
}

TEST_F(PostgresChangesOfAProfile, AreNullWithoutAnErrorOnceNoticesAreSwitchedOff)
{
    ASSERT_TRUE(store->SetNotices(false));
    EXPECT_EQ(store->WatchChanges(), nullptr);
    EXPECT_FALSE(store->LastError());
}

TEST_F(PostgresChangesOfAProfile, AreKeptByTheProfile)
{
    changes.reset();
    ReopenStore();
    EXPECT_NE(store->WatchChanges(), nullptr);
    ASSERT_TRUE(store->SetNotices(true)) << "once more";
    store.reset();
    ServerRawStore(StorePath()).Run(QStringLiteral("DROP TRIGGER tandry_notice ON Schedules"));
    StoreError error;
    EXPECT_EQ(PostgresDatabaseFactory::Open(StorePath(), error), nullptr);
    EXPECT_TRUE(error.text.contains(QStringLiteral("tandry_notice on schedules"))) << error.text.toStdString();
}

TEST_F(PostgresChangesOfAProfile, CannotBeSwitchedInATransaction)
{
    auto const database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    EXPECT_FALSE(store->SetNotices(false));
    EXPECT_TRUE(database->rollback());
    {
        TransactionalScope const scope;
        EXPECT_FALSE(store->SetNotices(false));
    }
    EXPECT_TRUE(store->SetNotices(false));
}

TEST_F(PostgresChangesOfAProfile, EndWithAnErrorWhenTheServerIsGone)
{
    PostgresServer server;
    ASSERT_TRUE(server.problem().isNull()) << server.problem().toStdString();
    auto const apart = PostgresDatabaseFactory::Open(server.Uri(QStringLiteral("a")));
    ASSERT_NE(apart, nullptr);
    ASSERT_TRUE(apart->SetNotices(true));
    auto const watched = apart->WatchChanges();
    ASSERT_NE(watched, nullptr);
    server.Crash();
    auto const sight = Next(*watched);
    ASSERT_TRUE(sight.error);
    EXPECT_EQ(sight.error->kind, StoreErrorKind::ConnectionLost);
    EXPECT_TRUE(watched->Look().error);
}

} // namespace
} // namespace postgres_changes_test
