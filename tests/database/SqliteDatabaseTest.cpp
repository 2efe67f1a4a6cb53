#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/CommitFailures.h"
#include "support/FaultyFiles.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QObject>

#include <thread>

namespace {

using namespace tandry::test;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::TransactionalScope;

class SqliteDatabase : public EachJournalMode
{
protected:
    // Each on an object of its own: the transaction belongs to the thread's connection.
    bool Begin() { return store->CreateDatabase()->transaction(); }
    bool Commit() { return store->CreateDatabase()->commit(); }
    bool Rollback() { return store->CreateDatabase()->rollback(); }
    bool Add(char const* alias) { return AddServer(*store, QString::fromLatin1(alias)); }

    /// The operation must fail, with the reason in the object and in the factory.
    void ExpectRefusal(bool (sync::interf::IQSqlDatabaseWrapper::*operation)(), char const* words)
    {
        store->ClearError();
        auto const database = store->CreateDatabase();
        EXPECT_FALSE((database.get()->*operation)());
        EXPECT_TRUE(database->lastError().contains(QString::fromLatin1(words))) << database->lastError().toStdString();
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->text, database->lastError());
        store->ClearError();
    }
};

TANDRY_IN_EACH_JOURNAL_MODE(SqliteDatabase);

TEST_P(SqliteDatabase, CommitMakesDurableWhatTheTransactionWrote)
{
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Add("a"));
    ASSERT_TRUE(Add("b"));
    if (UsesLog()) {
        EXPECT_EQ(RawStore(StorePath()).Count(QStringLiteral("ServerConfiguration")), 0);
    }
    ASSERT_TRUE(Commit());
    EXPECT_EQ(RawStore(StorePath()).Count(QStringLiteral("ServerConfiguration")), 2);
    ASSERT_TRUE(Add("c")) << "after the transaction each write is by itself again";
    EXPECT_EQ(RawStore(StorePath()).Count(QStringLiteral("ServerConfiguration")), 3);
}

TEST_P(SqliteDatabase, RollbackTakesBackAllThatTheTransactionWrote)
{
    ASSERT_TRUE(Add("before"));
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Add("a"));
    {
        TransactionalScope const outer;
        ASSERT_TRUE(Add("in a scope"));
        TransactionalScope inner;
        ASSERT_TRUE(Add("in an inner scope"));
        EXPECT_TRUE(inner.commit());
    }
    EXPECT_EQ(CountServers(*store), 4);
    ASSERT_TRUE(Rollback());
    EXPECT_EQ(CountServers(*store), 1);
    EXPECT_TRUE(Add("after"));
}

TEST_P(SqliteDatabase, ScopesInsideAClientTransactionJoinIt)
{
    ASSERT_TRUE(Begin());
    {
        TransactionalScope scope;
        ASSERT_TRUE(Add("a"));
        EXPECT_TRUE(scope.commit()) << "true, and nothing ends";
        ASSERT_TRUE(Add("b"));
    }
    if (UsesLog()) {
        EXPECT_EQ(RawStore(StorePath()).Count(QStringLiteral("ServerConfiguration")), 0);
    }
    ASSERT_TRUE(Commit());
    EXPECT_EQ(RawStore(StorePath()).Count(QStringLiteral("ServerConfiguration")), 2);
}

TEST_P(SqliteDatabase, SecondTransactionIsRefusedAndChangesNothing)
{
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Add("a"));
    ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::transaction, "open already");
    ASSERT_TRUE(Add("b"));
    ASSERT_TRUE(Commit());
    EXPECT_EQ(CountServers(*store), 2);
}

TEST_P(SqliteDatabase, TransactionInsideAnOpenScopeIsRefused)
{
    {
        TransactionalScope const scope;
        ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::transaction, "scope");
        ASSERT_TRUE(Add("a"));
        ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::transaction, "scope");
    }
    EXPECT_EQ(CountServers(*store), 1);
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Rollback());
}

TEST_P(SqliteDatabase, CommitAndRollbackWithoutATransactionAreRefused)
{
    ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::commit, "no transaction");
    ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::rollback, "no transaction");
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("a"));
        ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::commit, "no transaction");
        ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::rollback, "no transaction");
    }
    EXPECT_EQ(CountServers(*store), 1) << "a scope's transaction is not the client's";
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Commit());
    ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::commit, "no transaction");
}

TEST_P(SqliteDatabase, TransactionMayEndInsideAScopeThatBeganInIt)
{
    ASSERT_TRUE(Begin());
    {
        TransactionalScope const scope;
        ASSERT_TRUE(Add("in the transaction"));
        ASSERT_TRUE(Rollback());
        ASSERT_TRUE(Add("in the scope alone"));
    }
    EXPECT_EQ(Column(*store, QStringLiteral("SELECT alias FROM ServerConfiguration")),
              std::vector<QVariant>{QStringLiteral("in the scope alone")});
}

TEST_P(SqliteDatabase, FailedStatementLeavesTheTransactionAsItIs)
{
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Add("a"));
    EXPECT_FALSE(Execute(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (1)")));
    ASSERT_TRUE(Add("b"));
    ASSERT_TRUE(Commit());
    EXPECT_EQ(CountServers(*store), 2);
    store->ClearError();
}

TEST_P(SqliteDatabase, TransactionOfOneThreadIsNoneOfAnother)
{
    ASSERT_TRUE(Begin());
    std::thread([this] {
        EXPECT_FALSE(Commit());
        EXPECT_FALSE(Rollback());
    }).join();
    ASSERT_TRUE(Add("a"));
    ASSERT_TRUE(Commit());
}

TEST_P(SqliteDatabase, TransactionLeftOpenWhenItsThreadEndsIsRolledBack)
{
    std::thread([this] {
        EXPECT_TRUE(Begin());
        EXPECT_TRUE(Add("a"));
    }).join();
    EXPECT_EQ(CountServers(*store), 0);
    EXPECT_TRUE(Add("b")) << "its lock is gone";
}

TEST_P(SqliteDatabase, TransactionLeftOpenWhenTheFactoryGoesIsRolledBack)
{
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Add("a"));
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 0);
    EXPECT_TRUE(Add("b"));
}

TEST_P(SqliteDatabase, ObjectsThatOutliveTheFactoryFailAndDontCrash)
{
    ASSERT_TRUE(Add("a"));
    auto const database = store->CreateDatabase();
    auto const query = Prepared(*store, QStringLiteral("SELECT alias FROM ServerConfiguration"));
    auto const insert = Prepared(*store, QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('b')"));
    auto const fresh = store->CreateQuery();
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(insert->exec());
    store.reset();

    EXPECT_FALSE(query->next() && query->next());
    EXPECT_FALSE(query->exec());
    EXPECT_TRUE(query->lastError().contains(QStringLiteral("closed"))) << query->lastError().toStdString();
    EXPECT_FALSE(insert->exec());
    EXPECT_FALSE(fresh->prepare(QStringLiteral("SELECT 1")));
    EXPECT_FALSE(fresh->exec());
    EXPECT_FALSE(database->isOpen());
    EXPECT_FALSE(database->transaction());
    EXPECT_FALSE(database->commit());
    EXPECT_FALSE(database->rollback());
    EXPECT_FALSE(database->lastError().isEmpty());
}

TEST_P(SqliteDatabase, TransactionIsRolledBackWhenTheLastObjectGoesThatOutlivedTheFactory)
{
    auto database = store->CreateDatabase();
    ASSERT_TRUE(database->transaction());
    ASSERT_TRUE(Add("a"));
    store.reset();
    database.reset();
    OpenStore();
    EXPECT_EQ(CountServers(*store), 0);
    EXPECT_TRUE(Add("b"));
}

TEST_P(SqliteDatabase, LockThatCannotBeHadShowsAtTransaction)
{
    store.reset();
    OpenOptions options;
    options.busyTimeoutMsec = 0;
    OpenStore(options);
    RawStore other(StorePath());
    other.Run(QStringLiteral("BEGIN IMMEDIATE"));
    ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::transaction, "locked");
    other.Run(QStringLiteral("COMMIT"));
    EXPECT_TRUE(Begin());
    EXPECT_TRUE(Rollback());
}

TEST_P(SqliteDatabase, CommitThatFailsReturnsFalseAndRollsTheTransactionBack)
{
    FaultyFiles files;
    ReopenStore();
    CommitFailures const lost(*store);
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Add("a"));
    files.Fail(1, SQLITE_IOERR_FSYNC, {FileOperation::Sync});
    ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::commit, "reading or writing failed");
    EXPECT_TRUE(files.Recover());
    EXPECT_EQ(lost.size(), 0u) << "commit has an answer of its own";
    EXPECT_EQ(CountServers(*store), 0);
    ExpectRefusal(&sync::interf::IQSqlDatabaseWrapper::commit, "no transaction");
    ASSERT_TRUE(Begin()) << "the connection works on";
    ASSERT_TRUE(Add("b"));
    ASSERT_TRUE(Commit());
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 1);
    store.reset();
}

/// More than a connection keeps in memory, so that the statement writes to the disk before the commit.
QString LargeInsert()
{
    return QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 40) "
                          "INSERT INTO ServerConfiguration (alias) SELECT hex(zeroblob(500000)) FROM n");
}

TEST_P(SqliteDatabase, TransactionThatAFaultRolledBackTakesNoWritesUntilItEnds)
{
    for (bool const commits : {false, true}) {
        FaultyFiles files;
        ReopenStore();
        ASSERT_TRUE(Begin());
        ASSERT_TRUE(Add("a"));
        files.Fail(1, SQLITE_IOERR_WRITE, {FileOperation::Write}, true);
        EXPECT_FALSE(Execute(*store, LargeInsert()));
        EXPECT_TRUE(files.Recover());
        EXPECT_EQ(store->LastError()->code, SQLITE_IOERR_WRITE);
        EXPECT_EQ(CountServers(*store), 0);
        EXPECT_FALSE(Add("b")) << "it would be durable by itself";
        EXPECT_EQ(commits ? Commit() : !Rollback(), false);
        EXPECT_FALSE(Rollback()) << "the transaction has ended";
        store->ClearError();
        ASSERT_TRUE(Begin());
        EXPECT_TRUE(Add("c"));
        EXPECT_TRUE(Rollback());
        ReopenStore();
        EXPECT_EQ(CountServers(*store), 0);
        store.reset();
    }
}

TEST_P(SqliteDatabase, FullDiskInATransactionLeavesNoDoubtAboutWhatItWrote)
{
    FaultyFiles files;
    ReopenStore();
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Add("a"));
    files.SetRoom(0);
    EXPECT_FALSE(Execute(*store, LargeInsert()));
    EXPECT_TRUE(files.Recover());
    EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_FULL);
    store->ClearError();
    bool const committed = Commit();
    ReopenStore();
    EXPECT_EQ(CountServers(*store), committed ? 1 : 0);
    store.reset();
}

TEST_P(SqliteDatabase, IsOpenTellsWhetherTheStoreCanBeReached)
{
    EXPECT_TRUE(store->CreateDatabase()->isOpen());
    EXPECT_TRUE(store->CreateDatabase()->lastError().isNull());
    ASSERT_TRUE(QFile::rename(StorePath(), StorePath() + QStringLiteral(".away")));
    std::thread([this] {
        auto const database = store->CreateDatabase();
        EXPECT_FALSE(database->isOpen());
        EXPECT_FALSE(database->lastError().isEmpty());
    }).join();
    store.reset();
    EXPECT_FALSE(QFile::exists(StorePath())) << "no new file comes in its place";
}

} // namespace
