#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QFileInfo>

#include <sqlite3.h>

#include <thread>

namespace {

using namespace tandry::test;

/// The `journal_size_limit` of the connections, in bytes: the size to which an unused log shrinks.
constexpr qint64 LogLimit = 8 * 1024 * 1024;

class LogSize : public StoreFixture
{
protected:
    qint64 LogBytes() const { return QFileInfo(StorePath() + "-wal"_q).size(); }

    /// Adds rows in transactions of a thousand, on another thread.
    void AddServersOnAnotherThread(int thousands)
    {
        std::thread([&] {
            for (int thousand = 0; thousand < thousands; ++thousand) {
                ASSERT_TRUE(store->CreateDatabase()->transaction());
                auto const query =
                    Prepared(*store, "INSERT INTO ServerConfiguration (alias, davUrl) VALUES (:alias, :davUrl);"_q);
                for (int row = 0; row < 1000; ++row) {
                    query->bindValue(":alias"_q, row);
                    query->bindValue(":davUrl"_q, QString(40, QLatin1Char('u')));
                    ASSERT_TRUE(query->exec());
                }
                ASSERT_TRUE(store->CreateDatabase()->commit());
            }
        }).join();
    }

    /// Whether a checkpoint can process the whole log; an active statement of any connection prevents that.
    bool LogCanBeCheckpointed() const
    {
        RawStore raw(StorePath());
        sqlite3_busy_timeout(raw.handle(), 0);
        raw.Count("ServerConfiguration"_q); // a connection opens the log when it first reads
        return sqlite3_wal_checkpoint_v2(raw.handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr) ==
               SQLITE_OK;
    }
};

TEST_F(LogSize, ShrinksAfterALongListingEndsAndIsDeletedOnClose)
{
    ASSERT_TRUE(AddServer(*store, "first"_q));
    ASSERT_TRUE(AddServer(*store, "second"_q));
    auto listing = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(listing->exec());
    ASSERT_TRUE(listing->next());

    AddServersOnAnotherThread(200);
    ASSERT_GT(LogBytes(), LogLimit) << "the listing does not hold the log, so the test is void";
    ASSERT_TRUE(listing->next());
    EXPECT_EQ(listing->value(0).toString(), "second"_q);
    EXPECT_FALSE(listing->next()) << "a listing shows the state at its beginning";

    AddServersOnAnotherThread(2); // the first one checkpoints the log, the second one starts it again
    EXPECT_LE(LogBytes(), LogLimit);
    EXPECT_EQ(CountServers(*store), 202'002);

    listing.reset();
    store.reset();
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-wal"_q));
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-shm"_q));
}

TEST_F(LogSize, StatementIsInactiveAfterItsLastRow)
{
    ASSERT_TRUE(AddServer(*store, "only"_q));
    auto const query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    AddServersOnAnotherThread(1);
    EXPECT_FALSE(query->next());
    EXPECT_TRUE(LogCanBeCheckpointed()) << "while the query exists";
}

TEST_F(LogSize, StatementIsInactiveAfterItsQueryIsDestroyed)
{
    ASSERT_TRUE(AddServer(*store, "one"_q));
    ASSERT_TRUE(AddServer(*store, "two"_q));
    auto query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    AddServersOnAnotherThread(1);
    EXPECT_FALSE(LogCanBeCheckpointed()) << "an unfinished listing holds the log";
    query.reset();
    EXPECT_TRUE(LogCanBeCheckpointed());
}

TEST_F(LogSize, StatementIsInactiveAfterFinish)
{
    ASSERT_TRUE(AddServer(*store, "one"_q));
    ASSERT_TRUE(AddServer(*store, "two"_q));
    auto const query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    AddServersOnAnotherThread(1);
    query->finish();
    EXPECT_TRUE(LogCanBeCheckpointed());
}

} // namespace
