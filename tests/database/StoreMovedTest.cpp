#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/FolderContents.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QObject>

#include <thread>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::TransactionalScope;

/// A store whose file goes away, or makes room for another one, while it is open.
class StoreMoved : public EachJournalMode
{
protected:
    void ExpectTold()
    {
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->code, SQLITE_READONLY_DBMOVED);
        EXPECT_TRUE(store->LastError()->text.contains("removed or replaced"_q))
            << store->LastError()->text.toStdString();
        store->ClearError();
    }

    QString const away = folder.filePath("away.db"_q);
};

TANDRY_IN_EACH_JOURNAL_MODE(StoreMoved);

class StoreWithMovedLog : public StoreMoved
{};

TANDRY_WITH_LOG_ONLY(StoreWithMovedLog);

TEST_P(StoreMoved, WriteToAFileThatWentAwayFailsAndMakesNoNewOne)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(QFile::rename(StorePath(), away));
    EXPECT_FALSE(AddServer(*store, "b"_q));
    ExpectTold();
    {
        TransactionalScope const scope;
        EXPECT_FALSE(AddServer(*store, "c"_q));
        ExpectTold();
    }
    EXPECT_FALSE(store->CreateDatabase()->transaction());
    ExpectTold();
    EXPECT_FALSE(QFile::exists(StorePath()));

    ASSERT_TRUE(QFile::rename(away, StorePath()));
    EXPECT_TRUE(AddServer(*store, "d"_q)) << "it is back";
    EXPECT_EQ(CountServers(*store), 2);
}

TEST_P(StoreMoved, WriteToAFileThatWasReplacedFailsAndTheNewOneStaysAsItIs)
{
    ASSERT_TRUE(QFile::copy(StorePath(), away));
    ASSERT_TRUE(QFile::remove(StorePath()));
    ASSERT_TRUE(QFile::rename(away, StorePath()));
    QByteArray const replacement = ReadFile(StorePath());
    EXPECT_FALSE(AddServer(*store, "a"_q));
    ExpectTold();
    store.reset();
    EXPECT_TRUE(ReadFile(StorePath()) == replacement);
}

TEST_P(StoreMoved, NewConnectionNoticesIt)
{
    ASSERT_TRUE(QFile::copy(StorePath(), away));
    ASSERT_TRUE(QFile::remove(StorePath()));
    ASSERT_TRUE(QFile::rename(away, StorePath()));
    std::thread([this] {
        EXPECT_FALSE(Execute(*store, "SELECT * FROM ServerConfiguration"_q));
        ExpectTold();
    }).join();
}

TEST_P(StoreMoved, ScopeWhoseFileGoesBeforeItsEndIsTold)
{
    int lost = 0;
    QObject::connect(store.get(), &SqliteDatabaseFactory::CommitFailed, [&] { ++lost; });
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "a"_q));
        ASSERT_TRUE(QFile::rename(StorePath(), away));
    }
    EXPECT_EQ(lost, 1);
    ExpectTold();
    EXPECT_FALSE(QFile::exists(StorePath()));
}

TEST_P(StoreMoved, CommitOfATransactionWhoseFileWentReturnsFalse)
{
    ASSERT_TRUE(store->CreateDatabase()->transaction());
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(QFile::rename(StorePath(), away));
    EXPECT_FALSE(AddServer(*store, "b"_q));
    ExpectTold();
    EXPECT_FALSE(store->CreateDatabase()->commit());
    ExpectTold();
}

TEST_P(StoreWithMovedLog, IsNoticedAtWrites)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(QFile::remove(StorePath() + "-wal"_q));
    EXPECT_FALSE(AddServer(*store, "b"_q));
    ExpectTold();
    EXPECT_FALSE(store->CreateDatabase()->transaction());
    ExpectTold();
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 1) << "SQLite still had the log and has moved it into the file";
    EXPECT_TRUE(AddServer(*store, "c"_q));
}

} // namespace
