#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/CommitFailures.h"
#include "support/FaultyFiles.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QObject>

#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::TransactionalScope;

class SqliteScope : public EachJournalMode
{
protected:
    bool Add(char const* alias) { return AddServer(*store, QString::fromLatin1(alias)); }

    /// How many rows another connection sees, which are those that are durable.
    qlonglong Durable() const { return RawStore(StorePath()).Count(QStringLiteral("ServerConfiguration")); }

    /// A second row can be written after the disk was full, and stays.
    void ExpectRoomFor(QString const& alias)
    {
        {
            TransactionalScope const scope;
            EXPECT_TRUE(AddServer(*store, alias)) << "there is room again";
        }
        ReopenStore();
        EXPECT_EQ(CountServers(*store), 2);
        store.reset();
    }
};

TANDRY_IN_EACH_JOURNAL_MODE(SqliteScope);

TEST_P(SqliteScope, EndWithoutCommitMakesTheWritesDurable)
{
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        ASSERT_TRUE(Add("b"));
        EXPECT_EQ(CountServers(*store), 2) << "the thread sees its own writes";
        EXPECT_EQ(Durable(), 0);
    }
    EXPECT_EQ(Durable(), 2);
}

TEST_P(SqliteScope, EndOfAnInnerScopeEndsNothing)
{
    {
        TransactionalScope const outer;
        ASSERT_TRUE(Add("outer"));
        {
            TransactionalScope const inner;
            EXPECT_EQ(TransactionalScope::Depth(), 2);
            ASSERT_TRUE(Add("inner"));
        }
        EXPECT_EQ(TransactionalScope::Depth(), 1);
        EXPECT_EQ(Durable(), 0);
        ASSERT_TRUE(Add("outer again"));
        EXPECT_EQ(Durable(), 0);
    }
    EXPECT_EQ(TransactionalScope::Depth(), 0);
    EXPECT_EQ(Durable(), 3);
}

TEST_P(SqliteScope, WritesOfAnInnerScopeAloneAreDurableWhenTheOuterOneEnds)
{
    {
        TransactionalScope const outer;
        {
            TransactionalScope const inner;
            ASSERT_TRUE(Add("inner"));
        }
        EXPECT_EQ(Durable(), 0);
    }
    EXPECT_EQ(Durable(), 1);
}

TEST_P(SqliteScope, FailedStatementUndoesNothingThatWentBeforeAndStopsNothingAfter)
{
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("before"));
        EXPECT_FALSE(Execute(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (1)")));
        EXPECT_FALSE(Execute(*store, QStringLiteral("INSERT INTO Missing (id) VALUES (1)")));
        ASSERT_TRUE(Add("after"));
    }
    EXPECT_EQ(Durable(), 2);
    store->ClearError();
}

TEST_P(SqliteScope, ScopeWhoseOnlyStatementFailedEndsWithNothing)
{
    ASSERT_TRUE(Add("a"));
    {
        TransactionalScope const scope;
        EXPECT_FALSE(Execute(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (1)")));
    }
    EXPECT_EQ(Durable(), 1);
    EXPECT_TRUE(Add("b")) << "and the connection works on";
    store->ClearError();
}

TEST_P(SqliteScope, CommitOfTheOutermostScopeMakesDurableAndTheRestBeginsAnew)
{
    TransactionalScope scope;
    EXPECT_TRUE(scope.commit()) << "of nothing";
    ASSERT_TRUE(Add("a"));
    EXPECT_TRUE(scope.commit());
    EXPECT_EQ(Durable(), 1);
    ASSERT_TRUE(Add("b"));
    EXPECT_EQ(Durable(), 1);
    EXPECT_TRUE(scope.commit());
    EXPECT_EQ(Durable(), 2);
}

TEST_P(SqliteScope, CommitOfAnInnerScopeMakesNothingDurable)
{
    {
        TransactionalScope const outer;
        ASSERT_TRUE(Add("a"));
        TransactionalScope inner;
        ASSERT_TRUE(Add("b"));
        EXPECT_TRUE(inner.commit());
        EXPECT_EQ(Durable(), 0);
    }
    EXPECT_EQ(Durable(), 2);
}

TEST_P(SqliteScope, CommitAfterAFailedStatementKeepsWhatWentBefore)
{
    {
        TransactionalScope scope;
        ASSERT_TRUE(Add("a"));
        EXPECT_FALSE(Execute(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (1)")));
        EXPECT_TRUE(scope.commit());
    }
    EXPECT_EQ(Durable(), 1);
    store->ClearError();
}

TEST_P(SqliteScope, ExceptionThatPassesKeepsTheWrites)
{
    EXPECT_THROW(
        {
            TransactionalScope const scope;
            EXPECT_TRUE(Add("a"));
            throw std::runtime_error("passes");
        },
        std::runtime_error);
    EXPECT_EQ(Durable(), 1);
}

TEST_P(SqliteScope, ScopeThatOnlyReadsLocksNobodyOut)
{
    TransactionalScope const scope;
    EXPECT_EQ(CountServers(*store), 0);
    RawStore raw(StorePath());
    sqlite3_busy_timeout(raw.handle(), 0);
    raw.Run(QStringLiteral("BEGIN EXCLUSIVE; COMMIT"));
}

TEST_P(SqliteScope, WriteOutsideAnyScopeIsDurableAtOnce)
{
    ASSERT_TRUE(Add("a"));
    EXPECT_EQ(Durable(), 1);
}

TEST_P(SqliteScope, TwoStoresInOneScopeBothCommit)
{
    QString error;
    auto const other = SqliteDatabaseFactory::Open(folder.filePath(QStringLiteral("other.db")), &error);
    ASSERT_NE(other, nullptr) << error.toStdString();
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        ASSERT_TRUE(AddServer(*other, QStringLiteral("b")));
    }
    EXPECT_EQ(Durable(), 1);
    EXPECT_EQ(RawStore(other->path()).Count(QStringLiteral("ServerConfiguration")), 1);
}

TEST_P(SqliteScope, ScopesOfTwoThreadsAreTwo)
{
    {
        TransactionalScope const scope;
        std::thread([this] {
            TransactionalScope const own;
            EXPECT_TRUE(Add("a"));
        }).join();
        EXPECT_EQ(Durable(), 1) << "the other thread's scope has ended";
        ASSERT_TRUE(Add("b"));
    }
    EXPECT_EQ(Durable(), 2);
}

TEST_P(SqliteScope, FactoryThatGoesInsideAnOpenScopeLosesNothing)
{
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        store.reset();
    }
    OpenStore();
    EXPECT_EQ(CountServers(*store), 1);
}

TEST_P(SqliteScope, FactoryThatGoesOnAnotherThreadInsideAnOpenScopeLosesNothing)
{
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        std::thread([this] { store.reset(); }).join();
    }
    OpenStore();
    EXPECT_EQ(CountServers(*store), 1);
}

TEST_P(SqliteScope, ThreadThatEndsWithAScopeThatNeverDidKeepsItsWrites)
{
    std::thread([this] {
        // Its owner never comes to deleting it, as when a program exits in the middle of an operation.
        static auto& forgotten = *new std::vector<TransactionalScope*>;
        forgotten.push_back(new TransactionalScope);
        EXPECT_TRUE(Add("a"));
    }).join();
    EXPECT_EQ(Durable(), 1);
}

TEST_P(SqliteScope, ProgramThatExitsInsideAScopeKeepsItsWrites)
{
    EXPECT_EQ(OtherProgram(StorePath(), {"add-and-exit"_q}).Wait(), 0);
    EXPECT_EQ(CountServers(*store), 1);
}

TEST_P(SqliteScope, FailedCommitAtTheEndIsToldAndTheConnectionWorksOn)
{
    FaultyFiles files;
    ReopenStore();
    std::vector<StoreError> lost;
    QObject::connect(store.get(), &SqliteDatabaseFactory::CommitFailed, [&](StoreError const& error) {
        lost.push_back(error);
        EXPECT_EQ(TransactionalScope::Depth(), 0);
    });
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        ASSERT_TRUE(Add("b"));
        files.Fail(1, SQLITE_IOERR_FSYNC, {FileOperation::Sync});
    }
    EXPECT_TRUE(files.Recover());
    ASSERT_EQ(lost.size(), 1u);
    EXPECT_EQ(lost.front().code, SQLITE_IOERR_FSYNC);
    EXPECT_TRUE(lost.front().text.contains(StorePath()));
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->code, SQLITE_IOERR_FSYNC);
    EXPECT_EQ(CountServers(*store), 0);

    store->ClearError();
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("c"));
    }
    EXPECT_EQ(lost.size(), 1u);
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 1);
    store.reset();
}

TEST_P(SqliteScope, FailedCommitIsAnsweredByCommit)
{
    FaultyFiles files;
    ReopenStore();
    CommitFailures const lost(*store);
    TransactionalScope scope;
    ASSERT_TRUE(Add("a"));
    files.Fail(1, SQLITE_IOERR_FSYNC, {FileOperation::Sync});
    EXPECT_FALSE(scope.commit());
    EXPECT_TRUE(files.Recover());
    EXPECT_EQ(lost.size(), 1u);
    EXPECT_TRUE(Add("b")) << "what follows begins anew";
    EXPECT_TRUE(scope.commit());
    EXPECT_EQ(CountServers(*store), 1);
    store->ClearError();
    store.reset();
}

TEST_P(SqliteScope, SlotThatHearsOfAFailedCommitMayWrite)
{
    FaultyFiles files;
    ReopenStore();
    QObject::connect(store.get(), &SqliteDatabaseFactory::CommitFailed, [&] {
        files.Recover();
        TransactionalScope const scope;
        EXPECT_TRUE(Add("from the slot"));
    });
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("lost"));
        files.Fail(1, SQLITE_IOERR_FSYNC, {FileOperation::Sync});
    }
    store->ClearError();
    ReopenStore();
    EXPECT_EQ(Column(*store, QStringLiteral("SELECT alias FROM ServerConfiguration")),
              std::vector<QVariant>{QStringLiteral("from the slot")});
    store.reset();
}

/// The promise behind all of the above, with a disk that is full after each number of bytes: what was answered with
/// true is there after reopening, or the signal was sent.
TEST_P(SqliteScope, FullDiskAtAnyPointLosesNothingInSilence)
{
    constexpr int Rows = 3;
    int reached = 0;
    for (qint64 room = 0;; room += 2000) {
        store.reset();
        ASSERT_TRUE(QFile::remove(StorePath()));
        FaultyFiles files;
        SetUp();
        files.SetRoom(room);
        std::vector<int> answered;
        bool told = false;
        QObject::connect(store.get(), &SqliteDatabaseFactory::CommitFailed, [&] { told = true; });
        for (int row = 0; row < Rows; ++row) {
            TransactionalScope const scope;
            for (int part = 0; part < 2; ++part) {
                if (AddServer(*store, QString(3000, QLatin1Char('a')) + QString::number(row)))
                    answered.push_back(row);
            }
        }
        bool const hit = files.Recover();
        bool const failed = store->LastError().has_value();
        store->ClearError();
        ReopenStore();
        int const kept = CountServers(*store);
        EXPECT_TRUE(told || kept == static_cast<int>(answered.size())) << kept << " rows with room " << room;
        EXPECT_TRUE(failed == hit || kept == 2 * Rows) << room;
        EXPECT_EQ(RawStore(StorePath()).Value(QStringLiteral("PRAGMA integrity_check")).toString(),
                  QStringLiteral("ok"));
        store.reset();
        if (!hit)
            break;
        ++reached;
    }
    EXPECT_GT(reached, 10);
}

TEST_P(SqliteScope, LockThatCannotBeHadShowsAtExec)
{
    store.reset();
    sync::database::OpenOptions options;
    options.busyTimeoutMsec = 0;
    OpenStore(options);
    RawStore other(StorePath());
    other.Run(QStringLiteral("BEGIN IMMEDIATE"));
    {
        TransactionalScope const scope;
        EXPECT_FALSE(Add("a"));
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_BUSY);
        EXPECT_TRUE(store->LastError()->text.contains(QStringLiteral("locked")))
            << store->LastError()->text.toStdString();
        store->ClearError();
        EXPECT_EQ(CountServers(*store), 0) << "reading goes on";
        other.Run(QStringLiteral("ROLLBACK"));
        EXPECT_TRUE(Add("b")) << "and so does writing, once the other has ended";
    }
    EXPECT_EQ(Durable(), 1);
}

class SqliteScopeWithLog : public SqliteScope
{};

TANDRY_WITH_LOG_ONLY(SqliteScopeWithLog);

TEST_P(SqliteScopeWithLog, FullDiskShowsAtExecAndNotAtTheEnd)
{
    FaultyFiles files;
    ReopenStore();
    CommitFailures const lost(*store);
    ASSERT_TRUE(Add("before"));
    QString const large(1'000'000, QLatin1Char('x'));
    {
        TransactionalScope const scope;
        files.SetRoom(100'000);
        EXPECT_FALSE(AddServer(*store, large));
        EXPECT_TRUE(files.Recover());
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_FULL);
        EXPECT_TRUE(store->LastError()->text.contains(folder.path())) << store->LastError()->text.toStdString();
        store->ClearError();
    }
    EXPECT_EQ(lost.size(), 0u) << "nobody was told of a success";
    EXPECT_EQ(CountServers(*store), 1);
    ExpectRoomFor(large);
}

TEST_P(SqliteScopeWithLog, FullDiskThatTakesEarlierWritesWithItIsTold)
{
    FaultyFiles files;
    ReopenStore();
    CommitFailures const lost(*store);
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        files.SetRoom(0);
        EXPECT_FALSE(AddServer(*store, QString(1'000'000, QLatin1Char('x'))));
        EXPECT_TRUE(files.Recover());
        ASSERT_EQ(lost.size(), 1u);
        EXPECT_EQ(lost.front().code & 0xff, SQLITE_FULL);
        EXPECT_EQ(CountServers(*store), 0);
        EXPECT_TRUE(Add("b")) << "what follows begins anew";
    }
    store->ClearError();
    EXPECT_EQ(lost.size(), 1u);
    ReopenStore();
    EXPECT_EQ(Column(*store, QStringLiteral("SELECT alias FROM ServerConfiguration")),
              std::vector<QVariant>{QStringLiteral("b")});
    store.reset();
}

TEST_P(SqliteScopeWithLog, ReaderKeepsNobodyFromWriting)
{
    store.reset();
    sync::database::OpenOptions options;
    options.busyTimeoutMsec = 0;
    OpenStore(options);
    ASSERT_TRUE(Add("a"));
    RawStore reader(StorePath());
    reader.Run(QStringLiteral("BEGIN; SELECT * FROM ServerConfiguration"));
    {
        TransactionalScope const scope;
        EXPECT_TRUE(Add("b"));
    }
    reader.Run(QStringLiteral("COMMIT"));
    EXPECT_EQ(Durable(), 2);
}

TEST_P(SqliteScopeWithLog, WriteOnTopOfAStateThatOthersHaveChangedIsRefused)
{
    ASSERT_TRUE(Add("a"));
    auto const query = Prepared(*store, "SELECT alias FROM ServerConfiguration"_q);
    ASSERT_TRUE(query->exec());
    RawStore(StorePath()).Run("INSERT INTO ServerConfiguration (alias) VALUES ('b')"_q);
    {
        TransactionalScope const scope;
        EXPECT_FALSE(Add("c"));
        EXPECT_TRUE(store->LastError()->text.contains("still reads"_q)) << store->LastError()->text.toStdString();
        store->ClearError();
        query->finish();
        EXPECT_TRUE(Add("c")) << "with the listing at its end";
    }
    EXPECT_EQ(CountServers(*store), 3);
}

class SqliteScopeWithJournal : public SqliteScope
{};

TANDRY_WITH_JOURNAL_ONLY(SqliteScopeWithJournal);

TEST_P(SqliteScopeWithJournal, OthersReadBesideAScopeThatHasWritten)
{
    ASSERT_TRUE(Add("before"));
    TransactionalScope const scope;
    ASSERT_TRUE(AddServer(*store, QString(20'000'000, QLatin1Char('x')))) << "more than SQLite's cache would hold";
    RawStore other(StorePath());
    sqlite3_busy_timeout(other.handle(), 0);
    EXPECT_EQ(other.Count(QStringLiteral("ServerConfiguration")), 1);
}

TEST_P(SqliteScopeWithJournal, FullDiskThatShowsAtTheEndIsTold)
{
    FaultyFiles files;
    ReopenStore();
    CommitFailures const lost(*store);
    ASSERT_TRUE(Add("before"));
    QString const large(1'000'000, QLatin1Char('x'));
    {
        TransactionalScope const scope;
        files.SetRoom(100'000); // for the journal, but not for the file
        ASSERT_TRUE(AddServer(*store, large));
    }
    EXPECT_TRUE(files.Recover());
    ASSERT_EQ(lost.size(), 1u);
    EXPECT_EQ(lost.front().code & 0xff, SQLITE_FULL);
    EXPECT_TRUE(lost.front().text.contains(folder.path())) << lost.front().text.toStdString();
    EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_FULL);
    store->ClearError();
    EXPECT_EQ(CountServers(*store), 1);
    ExpectRoomFor(large);
}

TEST_P(SqliteScopeWithJournal, ReaderThatKeepsAWriteFromItsCommitIsTold)
{
    store.reset();
    sync::database::OpenOptions options;
    options.busyTimeoutMsec = 0;
    OpenStore(options);
    ASSERT_TRUE(Add("a"));
    CommitFailures const lost(*store);
    RawStore reader(StorePath());
    reader.Run(QStringLiteral("BEGIN; SELECT * FROM ServerConfiguration"));
    {
        TransactionalScope const scope;
        EXPECT_TRUE(Add("b"));
    }
    ASSERT_EQ(lost.size(), 1u);
    EXPECT_TRUE(lost.front().text.contains(QStringLiteral("locked"))) << lost.front().text.toStdString();
    store->ClearError();
    reader.Run(QStringLiteral("COMMIT"));
    EXPECT_TRUE(Add("c")) << "and the connection works on";
    EXPECT_EQ(Durable(), 2);
}

} // namespace
