#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace {

using namespace tandry::test;
using sync::database::TransactionalScope;

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

    std::shared_ptr<sync::interf::IQSqlQueryWrapper> BeginListing()
    {
        auto listing = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
        EXPECT_TRUE(listing->exec());
        EXPECT_TRUE(listing->next());
        return listing;
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
    auto listing = BeginListing();

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
    auto const query = BeginListing();
    AddServersOnAnotherThread(1);
    EXPECT_FALSE(query->next());
    EXPECT_TRUE(LogCanBeCheckpointed()) << "while the query exists";
}

TEST_F(LogSize, StatementIsInactiveAfterItsQueryIsDestroyed)
{
    ASSERT_TRUE(AddServer(*store, "one"_q));
    ASSERT_TRUE(AddServer(*store, "two"_q));
    auto query = BeginListing();
    AddServersOnAnotherThread(1);
    EXPECT_FALSE(LogCanBeCheckpointed()) << "an unfinished listing holds the log";
    query.reset();
    EXPECT_TRUE(LogCanBeCheckpointed());
}

TEST_F(LogSize, StatementIsInactiveAfterFinish)
{
    ASSERT_TRUE(AddServer(*store, "one"_q));
    ASSERT_TRUE(AddServer(*store, "two"_q));
    auto const query = BeginListing();
    AddServersOnAnotherThread(1);
    query->finish();
    EXPECT_TRUE(LogCanBeCheckpointed());
}

/// A log that a listing holds, with a limit that tests can reach.
class LogAtItsLimit : public LogSize
{
protected:
    static constexpr qint64 Limit = 4 * 1024 * 1024;
    /// The bytes that the last transaction before the limit may add.
    static constexpr qint64 Transaction = 1024 * 1024;

    void SetUp() override { OpenWithLimit(0); }

    void OpenWithLimit(int busyTimeoutMsec)
    {
        store.reset();
        sync::database::OpenOptions options;
        options.logLimitBytes = Limit;
        options.busyTimeoutMsec = busyTimeoutMsec;
        OpenStore(options);
        ASSERT_TRUE(AddServer(*store, "first"_q));
        ASSERT_TRUE(AddServer(*store, "second"_q));
        ASSERT_TRUE(AddServer(*store, "third"_q));
    }

    /// On another thread. Whether the row could be added.
    bool AddLargeServer()
    {
        bool added = false;
        std::thread([&] {
            TransactionalScope const scope;
            added = AddServer(*store, QString(100'000, QLatin1Char('x')));
            error = store->LastError();
        }).join();
        return added;
    }

    void FillLog()
    {
        for (int row = 0; row < 1000; ++row) {
            if (!AddLargeServer())
                return;
        }
        FAIL() << "the log has no limit: " << LogBytes();
    }

    void ExpectRefusalOfWrites()
    {
        EXPECT_FALSE(AddLargeServer());
        ASSERT_TRUE(error);
        EXPECT_EQ(error->kind, sync::database::StoreErrorKind::Locked);
        EXPECT_TRUE(error->text.contains("log"_q)) << error->text.toStdString();
        EXPECT_GE(LogBytes(), Limit);
        EXPECT_LE(LogBytes(), Limit + Transaction);
    }

    std::optional<sync::database::StoreError> error; // of the other thread
};

TEST_F(LogAtItsLimit, ListingThatIsLeftOpenKeepsWritersWaitingWhenItIsReached)
{
    auto listing = BeginListing();
    FillLog();
    ExpectRefusalOfWrites();
    EXPECT_GT(RawStore(StorePath()).Count("ServerConfiguration"_q), 10) << "reading goes on";

    listing.reset();
    EXPECT_TRUE(AddLargeServer());
    EXPECT_LE(LogBytes(), Transaction);
}

TEST_F(LogAtItsLimit, ListingOfAnotherProgramKeepsWritersWaitingToo)
{
    RawStore other(StorePath());
    other.Run("BEGIN; SELECT * FROM ServerConfiguration"_q);
    FillLog();
    ExpectRefusalOfWrites();
    other.Run("COMMIT"_q);
    EXPECT_TRUE(AddLargeServer());
}

TEST_F(LogAtItsLimit, ListingThatIsReadOnIsToldToBeginAnew)
{
    auto const listing = BeginListing();
    EXPECT_TRUE(AddLargeServer());
    EXPECT_TRUE(listing->next()) << "as long as there is room";
    FillLog();
    EXPECT_FALSE(listing->next());
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->kind, sync::database::StoreErrorKind::Locked);
    EXPECT_TRUE(store->LastError()->text.contains("log"_q)) << store->LastError()->text.toStdString();
    EXPECT_FALSE(listing->isValid());
    store->ClearError();

    EXPECT_TRUE(AddLargeServer()) << "it holds the log no longer, though the query is still there";
    EXPECT_TRUE(listing->exec());
    EXPECT_TRUE(listing->next());
}

TEST_F(LogAtItsLimit, ListingThatBeganWhenItWasReachedIsWhole)
{
    auto const held = BeginListing();
    FillLog();
    std::thread([this] {
        EXPECT_GT(Column(*store, "SELECT alias FROM ServerConfiguration"_q).size(), 10u);
        EXPECT_FALSE(store->LastError());
    }).join();
}

TEST_F(LogAtItsLimit, WriteBesideTheThreadsOwnListingIsRefusedAtOnce)
{
    OpenWithLimit(600'000); // no test would wait so long
    auto const listing = BeginListing();
    bool added = true;
    for (int row = 0; added && row < 1000; ++row) {
        TransactionalScope const scope;
        added = AddServer(*store, QString(100'000, QLatin1Char('x')));
    }
    EXPECT_FALSE(added);
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->kind, sync::database::StoreErrorKind::Locked);
    store->ClearError();
    listing->finish();
    EXPECT_TRUE(AddServer(*store, "after"_q));
}

TEST_F(LogAtItsLimit, ListingsThatOverlapWithoutEndDoNotPushTheLogBeyondIt)
{
    OpenWithLimit(60'000);
    std::atomic<bool> isWriting{true};
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 2; ++reader) {
        readers.emplace_back([&] {
            while (isWriting) {
                std::size_t const rows = Column(*store, "SELECT id FROM ServerConfiguration"_q).size();
                EXPECT_TRUE(rows >= 3 || store->LastError()) << "it may have had to begin anew";
                store->ClearError();
            }
        });
    }
    qint64 largest = 0;
    for (int row = 0; row < 100; ++row) {
        EXPECT_TRUE(AddLargeServer());
        largest = std::max(largest, LogBytes());
    }
    isWriting = false;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_LE(largest, Limit + Transaction);
}

} // namespace
