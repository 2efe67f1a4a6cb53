#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "support/CommitFailures.h"
#include "support/FolderContents.h"
#include "support/OtherProgram.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QFileInfo>
#include <QObject>

#include <thread>

#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreErrorKind;
using sync::database::TransactionalScope;

/// A store whose files go away, make room for others, are cut or get a second name while it is open.
class StoreMoved : public EachJournalMode
{
protected:
    void ExpectTold(StoreErrorKind kind = StoreErrorKind::Moved, QString const& words = "removed or replaced"_q)
    {
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->kind, kind);
        EXPECT_TRUE(store->LastError()->text.contains(words)) << store->LastError()->text.toStdString();
        store->ClearError();
    }

    /// Every kind of write must fail.
    void ExpectNoWrite(StoreErrorKind kind, QString const& words)
    {
        EXPECT_FALSE(AddServer(*store, "alone"_q));
        ExpectTold(kind, words);
        {
            TransactionalScope const scope;
            EXPECT_FALSE(AddServer(*store, "in a scope"_q));
            ExpectTold(kind, words);
        }
        EXPECT_FALSE(store->CreateDatabase()->transaction());
        ExpectTold(kind, words);
    }

    void ExpectNoNewConnection(StoreErrorKind kind, QString const& words)
    {
        std::thread([&] {
            EXPECT_FALSE(Execute(*store, "SELECT * FROM ServerConfiguration"_q));
            ExpectTold(kind, words);
        }).join();
    }

    /// Without a descriptor, which would release the store's locks when it is closed.
    static void Cut(QString const& path, qint64 size)
    {
        ASSERT_EQ(::truncate(QFile::encodeName(path).constData(), size), 0);
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
    CommitFailures const lost(*store);
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "a"_q));
        ASSERT_TRUE(QFile::rename(StorePath(), away));
    }
    EXPECT_EQ(lost.size(), 1u);
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

TEST_P(StoreWithMovedLog, LogThatWasCutIsNoticed)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    Cut(StorePath() + "-wal"_q, QFileInfo(StorePath() + "-wal"_q).size() - 1);
    ExpectNoWrite(StoreErrorKind::Moved, "-wal"_q);
    ExpectNoNewConnection(StoreErrorKind::Moved, "-wal"_q);
}

TEST_P(StoreWithMovedLog, LogThatWasEmptiedByItsOwnersIsNoCut)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    RawStore raw(StorePath());
    raw.Run("PRAGMA wal_checkpoint(TRUNCATE)"_q);
    ASSERT_EQ(QFileInfo(StorePath() + "-wal"_q).size(), 0);
    EXPECT_TRUE(AddServer(*store, "b"_q));
}

/// The index of the log is missing: SQLite would make another one, and commits would overwrite each other.
class StoreWithMovedLogIndex : public StoreMoved
{
protected:
    QString IndexPath() const { return StorePath() + "-shm"_q; }
};

TANDRY_WITH_LOG_ONLY(StoreWithMovedLogIndex);

TEST_P(StoreWithMovedLogIndex, IsNoticedByWritesAndNewConnections)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(QFile::remove(IndexPath()));
    ExpectNoWrite(StoreErrorKind::Moved, "-shm"_q);
    ExpectNoNewConnection(StoreErrorKind::Moved, "-shm"_q);
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 1);
    EXPECT_TRUE(AddServer(*store, "b"_q));
}

TEST_P(StoreWithMovedLogIndex, IsNoticedAtTheEndsOfScopesAndClientTransactions)
{
    CommitFailures const lost(*store);
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "a"_q));
        ASSERT_TRUE(QFile::rename(IndexPath(), away));
    }
    EXPECT_EQ(lost.size(), 1u);
    ExpectTold(StoreErrorKind::Moved, "-shm"_q);

    ASSERT_TRUE(QFile::rename(away, IndexPath()));
    ASSERT_TRUE(store->CreateDatabase()->transaction()) << "it is back";
    ASSERT_TRUE(AddServer(*store, "b"_q));
    ASSERT_TRUE(QFile::remove(IndexPath()));
    EXPECT_FALSE(store->CreateDatabase()->commit());
    ExpectTold(StoreErrorKind::Moved, "-shm"_q);
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 0);
}

TEST_P(StoreWithMovedLogIndex, KeepsOtherProgramsOut)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(QFile::remove(IndexPath()));
    EXPECT_EQ(OtherProgram(StorePath(), {"add"_q, "1"_q}).Wait(), 1);
    EXPECT_FALSE(QFile::exists(IndexPath()));
    store.reset();
    EXPECT_EQ(OtherProgram(StorePath(), {"add"_q, "1"_q}).Wait(), 0);
    OpenStore();
    EXPECT_EQ(CountServers(*store), 2);
}

TEST_P(StoreWithMovedLogIndex, ThatSQLiteMadeAnewLosesNothingOfItsWriter)
{
    for (int row = 0; row < 10; ++row)
        ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_TRUE(QFile::remove(IndexPath()));
    ASSERT_EQ(OtherProgram(StorePath(), {"add-with-sqlite"_q, "8"_q}).Wait(), 0);
    ExpectNoWrite(StoreErrorKind::Moved, "-shm"_q);
    ExpectNoNewConnection(StoreErrorKind::Moved, "-shm"_q);
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 18);
    EXPECT_EQ(Single(*store, "PRAGMA integrity_check"_q), "ok"_q);
}

TEST_P(StoreWithMovedLogIndex, ThatWasCutIsNoticedByWritesNewConnectionsAndTheClose)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    Cut(IndexPath(), 0);
    ExpectNoWrite(StoreErrorKind::Moved, "-shm"_q);
    ExpectNoNewConnection(StoreErrorKind::Moved, "-shm"_q);
    ReopenStore();
    EXPECT_EQ(CountServers(*store), 1);
}

TEST_P(StoreMoved, WriteToAFileThatWasCutFails)
{
    qint64 const size = QFileInfo(StorePath()).size();
    for (qint64 left : {size - 1, size / 2, qint64(50), qint64(0)}) {
        Cut(StorePath(), left);
        ExpectNoWrite(StoreErrorKind::Damaged, "cut"_q);
    }
    store.reset();
}

TEST_P(StoreMoved, WriteToAFileThatAnotherProgramVacuumedSucceeds)
{
    RawStore raw(StorePath());
    for (int row = 0; row < 100; ++row)
        ASSERT_TRUE(AddServer(*store, QString(4000, QLatin1Char('x'))));
    raw.Run("PRAGMA wal_checkpoint(TRUNCATE)"_q);
    ASSERT_TRUE(Execute(*store, "DELETE FROM ServerConfiguration"_q));
    qint64 const size = QFileInfo(StorePath()).size();
    raw.Run("VACUUM; PRAGMA wal_checkpoint(TRUNCATE)"_q);
    ASSERT_LT(QFileInfo(StorePath()).size(), size);
    EXPECT_TRUE(AddServer(*store, "a"_q));
    EXPECT_EQ(CountServers(*store), 1);
}

TEST_P(StoreMoved, FileWithTwoNamesCanOnlyBeRead)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_EQ(::link(QFile::encodeName(StorePath()).constData(), QFile::encodeName(away).constData()), 0);
    ExpectNoWrite(StoreErrorKind::ReadOnly, "remove the other names"_q);
    EXPECT_EQ(CountServers(*store), 1);
    EXPECT_TRUE(store->Backup(folder.filePath("copy.db"_q)));
    ReopenStore();
    ExpectNoWrite(StoreErrorKind::ReadOnly, "remove the other names"_q);
    EXPECT_EQ(CountServers(*store), 1);

    sync::database::OpenOptions options;
    options.mode = sync::database::OpenMode::ReadOnly;
    QString error;
    auto const otherName = SqliteDatabaseFactory::Open(away, &error, options);
    ASSERT_NE(otherName, nullptr) << error.toStdString();
    EXPECT_EQ(CountServers(*otherName), 1);

    ASSERT_TRUE(QFile::remove(away));
    EXPECT_TRUE(AddServer(*store, "b"_q));
}

TEST_P(StoreWithMovedLog, FileWithTwoNamesIsNotOpenedUnderBothInOneProgram)
{
    ASSERT_EQ(::link(QFile::encodeName(StorePath()).constData(), QFile::encodeName(away).constData()), 0);
    QString error;
    EXPECT_EQ(SqliteDatabaseFactory::Open(away, &error), nullptr);
    EXPECT_TRUE(error.contains("remove the other names"_q)) << error.toStdString();
}

TEST_P(StoreMoved, FileThatGetsASecondNameInATransactionFailsItsCommit)
{
    ASSERT_TRUE(store->CreateDatabase()->transaction());
    ASSERT_TRUE(AddServer(*store, "a"_q));
    ASSERT_EQ(::link(QFile::encodeName(StorePath()).constData(), QFile::encodeName(away).constData()), 0);
    EXPECT_FALSE(AddServer(*store, "b"_q));
    ExpectTold(StoreErrorKind::ReadOnly, "hard links"_q);
    EXPECT_FALSE(store->CreateDatabase()->commit());
    ExpectTold(StoreErrorKind::ReadOnly, "hard links"_q);
    EXPECT_EQ(CountServers(*store), 0);
}

} // namespace
