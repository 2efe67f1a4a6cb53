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

/// What a log may keep on the disk once nobody needs it, in bytes: the limit that the connections are set to.
constexpr qint64 LogLimit = 8 * 1024 * 1024;

class LogSize : public StoreFixture
{
protected:
    qint64 LogBytes() const { return QFileInfo(StorePath() + "-wal"_q).size(); }

    /// Rows in brackets of a thousand, on a thread of their own.
    void AddServersOnAnotherThread(int thousands)
    {
        std::thread([&] {
            for (int bracket = 0; bracket < thousands; ++bracket) {
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

    /// Whether a checkpoint gets through the whole log, which an active statement of any connection keeps it from.
    bool LogCanBeWorkedOff() const
    {
        RawStore raw(StorePath());
        sqlite3_busy_timeout(raw.handle(), 0);
        raw.Count("ServerConfiguration"_q); // a connection that has read nothing has no log to work off
        return sqlite3_wal_checkpoint_v2(raw.handle(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr) ==
               SQLITE_OK;
    }
};

TEST_F(LogSize, IsBackUnderItsLimitSoonAfterALongListingEndsAndGoneAfterClosing)
{
    ASSERT_TRUE(AddServer(*store, "first"_q));
    ASSERT_TRUE(AddServer(*store, "second"_q));
    auto listing = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(listing->exec());
    ASSERT_TRUE(listing->next());

    AddServersOnAnotherThread(200);
    ASSERT_GT(LogBytes(), LogLimit) << "the listing held nothing, so this shows nothing";
    ASSERT_TRUE(listing->next());
    EXPECT_EQ(listing->value(0).toString(), "second"_q);
    EXPECT_FALSE(listing->next()) << "the listing shows what was there when it began";

    AddServersOnAnotherThread(2); // one works the log off, the next begins it anew
    EXPECT_LE(LogBytes(), LogLimit);
    EXPECT_EQ(CountServers(*store), 202'002);

    listing.reset();
    store.reset();
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-wal"_q));
    EXPECT_FALSE(QFileInfo::exists(StorePath() + "-shm"_q));
}

TEST_F(LogSize, NoStatementStaysActiveBehindItsLastRow)
{
    ASSERT_TRUE(AddServer(*store, "only"_q));
    auto const query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    AddServersOnAnotherThread(1);
    EXPECT_FALSE(query->next());
    EXPECT_TRUE(LogCanBeWorkedOff()) << "though the query is still there";
}

TEST_F(LogSize, NoStatementStaysActiveWhenItsQueryGoes)
{
    ASSERT_TRUE(AddServer(*store, "one"_q));
    ASSERT_TRUE(AddServer(*store, "two"_q));
    auto query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    AddServersOnAnotherThread(1);
    EXPECT_FALSE(LogCanBeWorkedOff()) << "a listing under way holds the log";
    query.reset();
    EXPECT_TRUE(LogCanBeWorkedOff());
}

TEST_F(LogSize, NoStatementStaysActiveAfterFinish)
{
    ASSERT_TRUE(AddServer(*store, "one"_q));
    ASSERT_TRUE(AddServer(*store, "two"_q));
    auto const query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    AddServersOnAnotherThread(1);
    query->finish();
    EXPECT_TRUE(LogCanBeWorkedOff());
}

} // namespace
