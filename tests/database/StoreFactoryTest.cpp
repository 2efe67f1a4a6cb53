#include "database/StoreFactory.h"
#include "database/TransactionalScope.h"
#include "support/FaultyFiles.h"
#include "support/Queries.h"
#include "support/RawStore.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QCoreApplication>
#include <QFile>
#include <QSize>

#include <memory>
#include <type_traits>
#include <vector>

namespace {

using namespace tandry::test;
using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::database::StoreFactory;
using sync::database::TransactionalScope;

static_assert(std::is_aggregate_v<StoreError>);
static_assert(std::is_abstract_v<StoreFactory>);

/// A client's slot that is connected by its text.
class Listener : public QObject
{
    Q_OBJECT

public:
    std::vector<StoreError> heard;

public Q_SLOTS:
    void OnCommitFailed(sync::database::StoreError const& error) { heard.push_back(error); }
};

class AStoreFactory : public StoreFixture
{
protected:
    void TearDown() override { store.reset(); }

    /// Loses a write whose scope could not commit.
    void FailCommit()
    {
        TransactionalScope const scope;
        ASSERT_TRUE(AddServer(*store, "lost"_q));
        files.Fail(1, SQLITE_IOERR_FSYNC, {FileOperation::Sync});
    }

    void ExpectError(StoreErrorKind kind, int primaryCode)
    {
        ASSERT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->kind, kind) << store->LastError()->text.toStdString();
        EXPECT_EQ(store->LastError()->code & 0xff, primaryCode);
        store->ClearError();
    }

    FaultyFiles files;
};

TEST_F(AStoreFactory, TellsAMissFromAFailureWhateverTheDatabase)
{
    StoreFactory& factory = *store;
    EXPECT_EQ(CountServers(factory), 0);
    EXPECT_FALSE(factory.LastError());
    EXPECT_FALSE(Execute(factory, "SELECT * FROM Nowhere"_q));
    EXPECT_TRUE(factory.LastError());
    factory.ClearError();
    EXPECT_FALSE(factory.LastError());
}

TEST_F(AStoreFactory, CommitFailedIsConnectedThroughEitherClassAndByItsText)
{
    ReopenStore();
    int byBase = 0;
    int byDerived = 0;
    Listener direct;
    Listener queued;
    StoreFactory* const base = store.get();
    QObject::connect(base, &StoreFactory::CommitFailed, [&] { ++byBase; });
    QObject::connect(store.get(), &SqliteDatabaseFactory::CommitFailed, [&] { ++byDerived; });
    QObject::connect(store.get(),
                     SIGNAL(CommitFailed(sync::database::StoreError)),
                     &direct,
                     SLOT(OnCommitFailed(sync::database::StoreError)));
    QObject::connect(store.get(),
                     SIGNAL(CommitFailed(sync::database::StoreError)),
                     &queued,
                     SLOT(OnCommitFailed(sync::database::StoreError)),
                     Qt::QueuedConnection);
    FailCommit();
    EXPECT_TRUE(files.Recover());
    EXPECT_EQ(byBase, 1);
    EXPECT_EQ(byDerived, 1);
    ASSERT_EQ(direct.heard.size(), 1u);
    EXPECT_EQ(direct.heard.front().code, SQLITE_IOERR_FSYNC);
    EXPECT_TRUE(queued.heard.empty());
    QCoreApplication::sendPostedEvents(&queued);
    ASSERT_EQ(queued.heard.size(), 1u);
    EXPECT_EQ(queued.heard.front().text, direct.heard.front().text);
}

TEST(AStoreError, MadeOfCodeTextAndStatementIsOfNoParticularKind)
{
    StoreError const error{SQLITE_BUSY, "text"_q, "statement"_q};
    EXPECT_EQ(error.kind, StoreErrorKind::Other);
    StoreError const other{SQLITE_BUSY, "text"_q, {}, StoreErrorKind::Locked};
    EXPECT_EQ(other.kind, StoreErrorKind::Locked);
}

TEST_F(AStoreFactory, LockOfAnotherProgramIsLocked)
{
    store.reset();
    OpenOptions options;
    options.busyTimeoutMsec = 0;
    OpenStore(options);
    RawStore other(StorePath());
    other.Run("BEGIN IMMEDIATE"_q);
    EXPECT_FALSE(AddServer(*store, "a"_q));
    ExpectError(StoreErrorKind::Locked, SQLITE_BUSY);
    other.Run("COMMIT"_q);
}

TEST_F(AStoreFactory, DiskWithoutRoomIsFull)
{
    ReopenStore();
    files.SetRoom(0);
    EXPECT_FALSE(AddServer(*store, QString(20000, QLatin1Char('x'))));
    files.Recover();
    ExpectError(StoreErrorKind::Full, SQLITE_FULL);
}

TEST_F(AStoreFactory, WriteToAStoreOpenForReadingIsReadOnly)
{
    store.reset();
    OpenOptions options;
    options.mode = OpenMode::ReadOnly;
    OpenStore(options);
    EXPECT_FALSE(AddServer(*store, "a"_q));
    ExpectError(StoreErrorKind::ReadOnly, SQLITE_READONLY);
}

TEST_F(AStoreFactory, FileThatWentAwayIsMoved)
{
    ASSERT_TRUE(QFile::rename(StorePath(), folder.filePath("away.db"_q)));
    EXPECT_FALSE(AddServer(*store, "a"_q));
    ExpectError(StoreErrorKind::Moved, SQLITE_READONLY);
}

TEST_F(AStoreFactory, WhatTheStoreDoesNotAcceptIsRefused)
{
    EXPECT_FALSE(Execute(*store, "SELECT * FROM Nowhere"_q));
    ExpectError(StoreErrorKind::Refused, SQLITE_ERROR);
    EXPECT_FALSE(Execute(*store, "SELECT 1; SELECT 2"_q));
    ExpectError(StoreErrorKind::Refused, SQLITE_MISUSE);
    EXPECT_FALSE(Execute(*store, "SELECT :a"_q, {{":b", 1}}));
    ExpectError(StoreErrorKind::Refused, SQLITE_RANGE);
    EXPECT_FALSE(Execute(*store, "SELECT :a"_q, {{":a", QSize(1, 1)}}));
    ExpectError(StoreErrorKind::Refused, SQLITE_MISMATCH);
    EXPECT_FALSE(Execute(*store, "INSERT INTO ServerConfiguration (id) VALUES (3000000000)"_q));
    ExpectError(StoreErrorKind::Refused, SQLITE_CONSTRAINT);
    EXPECT_FALSE(Execute(*store, "BEGIN"_q));
    ExpectError(StoreErrorKind::Refused, SQLITE_AUTH);
    EXPECT_FALSE(store->CreateQuery()->exec());
    ExpectError(StoreErrorKind::Refused, SQLITE_MISUSE);
}

TEST_F(AStoreFactory, FaultOfTheDiskIsOfAnotherKind)
{
    ReopenStore();
    files.Fail(1, SQLITE_IOERR_WRITE, {FileOperation::Write}, true);
    EXPECT_FALSE(AddServer(*store, "a"_q));
    EXPECT_TRUE(files.Recover());
    ExpectError(StoreErrorKind::Other, SQLITE_IOERR);
}

/// Opening with an error instead of a text.
class OpeningWithAnError : public testing::Test
{
protected:
    StoreErrorKind KindOfRefusal(OpenMode mode = OpenMode::OpenExisting)
    {
        OpenOptions options;
        options.mode = mode;
        StoreError error;
        EXPECT_EQ(SqliteDatabaseFactory::Open(path, error, options), nullptr);
        EXPECT_TRUE(error.text.startsWith(path + ": "_q)) << error.text.toStdString();
        EXPECT_NE(error.code, 0);
        return error.kind;
    }

    void Write(QByteArray const& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    QTemporaryDir folder;
    QString const path = folder.filePath("store.db"_q);
};

TEST_F(OpeningWithAnError, SetsItOnlyWhenTheStoreIsRefused)
{
    EXPECT_EQ(KindOfRefusal(), StoreErrorKind::Other) << "there is no such file";
    StoreError error{7, "as it was"_q, {}};
    EXPECT_NE(SqliteDatabaseFactory::Open(path, error), nullptr);
    EXPECT_EQ(error.code, 7);
    EXPECT_EQ(error.text, "as it was"_q);
}

TEST_F(OpeningWithAnError, TellsDamageFromAnotherVersion)
{
    Write(QByteArray(4096, 'x'));
    EXPECT_EQ(KindOfRefusal(), StoreErrorKind::Damaged);
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_NE(SqliteDatabaseFactory::Open(path), nullptr);
    RawStore(path).Run("PRAGMA user_version = 1000"_q);
    EXPECT_EQ(KindOfRefusal(), StoreErrorKind::NewerVersion);
    RawStore(path).Run("PRAGMA user_version = 0"_q);
    EXPECT_EQ(KindOfRefusal(OpenMode::ReadOnly), StoreErrorKind::OlderVersion);
}

TEST_F(OpeningWithAnError, LeavesCallsWithoutOneAsTheyWere)
{
    EXPECT_NE(SqliteDatabaseFactory::Open(path), nullptr);
    EXPECT_NE(SqliteDatabaseFactory::Open(path, nullptr), nullptr);
    EXPECT_NE(SqliteDatabaseFactory::Open(path, {}), nullptr);
    EXPECT_NE(SqliteDatabaseFactory::Open(path, nullptr, {}), nullptr);
    EXPECT_NE(SqliteDatabaseFactory::Open(path, nullptr, OpenOptions()), nullptr);
    EXPECT_NE(SqliteDatabaseFactory::Open(path, NULL), nullptr);
    QString text;
    EXPECT_NE(SqliteDatabaseFactory::Open(path, &text, {}), nullptr);
    EXPECT_TRUE(text.isNull());
}

} // namespace

#include "StoreFactoryTest.moc"
